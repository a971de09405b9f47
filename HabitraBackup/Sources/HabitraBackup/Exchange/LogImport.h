#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <HabitraBackup/Exchange/EntriesAfterToday.h>
#include <HabitraBackup/Exchange/EntryIdentifiers.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/LogPartners.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace habitra {

class StoreContext;
struct TaskEntity;

/// The identifiers that entries of a document have in the store, by those that they have in the document.
using StoredEntryIdentifiers = std::map<qz::UniqueID, std::optional<std::string>>;

/// Brings the entries of one task of a document into the log of one stored task, in the context's open unit. Entries of
/// a period are judged in the order of their rows; so those that are added are put in order of day, then of making,
/// then of the document, among themselves and before stored ones of their period that come later.
class LogImport {
 public:
  struct Manner {
    qz::Moment now;
    EntriesAfterToday afterToday = EntriesAfterToday::leftOut;
    /// What an entry of the document does not say is 0 or none, and not unknown.
    bool absentIsNone = false;
    /// The entries of a day stand in the order of their making, whatever moments they bear: the clock of whoever made
    /// them may have been set back. Counts for a log without any entries yet.
    bool isInOrderOfMaking = false;
  };

  /// REQUIRES: `context` and `identifiers` outlive this object, and a unit is open.
  LogImport(StoreContext& context, const TaskEntity& task, TaskCalendar calendar, const Manner& manner,
            const EntryIdentifiers& identifiers);

  /// Lets storedIdentifiers() tell of the entries that these timers name. To be called before the entries come.
  void follow(std::span<const TaskTimerEntity> timers);

  /// Adds what is not there yet. What a pass had filled in is not added to a period for which the stored log has a full
  /// entry: the next pass fills in what is right.
  ImportReport::Entries merge(std::span<const HabitraJSONBackupTaskEntry> entries);
  /// Makes the log that of the document: stored entries that it has keep their identifiers, others are removed.
  ImportReport::Entries overwrite(std::span<const HabitraJSONBackupTaskEntry> entries);

  /// The first day of an added entry that says that the task was being kept.
  [[nodiscard]] std::optional<qz::YYYYMMDD> earliestAdded() const { return earliestAdded_; }
  /// None for those that did not come.
  [[nodiscard]] const StoredEntryIdentifiers& storedIdentifiers() const { return followed_; }

 private:
  using PeriodBounds = std::pair<std::int32_t, std::int32_t>;
  struct Period {
    PeriodBounds bounds;
    std::optional<std::string> type;
  };
  /// Where an entry belongs within its period.
  using Place = std::tuple<std::int32_t, std::optional<qz::Moment>>;
  using Entries = std::span<const HabitraJSONBackupTaskEntry>;

  /// Adds those at the places `added`, which are in the order of the document and are put into that of the log.
  void add(Entries entries, std::vector<std::size_t>& added, const std::vector<LogCandidate>& stored);
  void add(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& identifier);
  /// The identifier that an added entry is to bear; none where the store is to give one.
  std::optional<qz::UniqueID> identify(const HabitraJSONBackupTaskEntry& entry);
  [[nodiscard]] bool comesBefore(const HabitraJSONBackupTaskEntry& a, const HabitraJSONBackupTaskEntry& b,
                                 bool byMoment) const;
  [[nodiscard]] qz::Moment made(const HabitraJSONBackupTaskEntry& entry) const;
  /// Puts stored entries that come later behind the added ones of their periods.
  void putInOrder(Entries entries, const std::vector<std::size_t>& added, const std::vector<LogCandidate>& stored);
  void putInOrder(const PeriodBounds& period);
  void noteIdentifier(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& stored);
  bool update(LogCandidate& stored, const HabitraJSONBackupTaskEntry& entry);
  [[nodiscard]] std::vector<LogCandidate> candidates() const;
  [[nodiscard]] Period periodByFrequency(qz::YYYYMMDD day) const;
  [[nodiscard]] Period period(const HabitraJSONBackupTaskEntry& entry) const;
  [[nodiscard]] PeriodBounds bounds(std::int32_t day, std::int32_t periodFrom, std::int32_t periodTo) const;
  [[nodiscard]] PeriodBounds bounds(const LogCandidate& stored) const;
  /// The periods that have a full entry, in order.
  [[nodiscard]] std::vector<PeriodBounds> periodsWithFullEntry(const std::vector<LogCandidate>& stored) const;
  [[nodiscard]] bool givesWay(const LogCandidate& stored) const;
  /// Such an entry would be deleted by the next pass, so it is not brought in.
  [[nodiscard]] bool liesAfterToday(const HabitraJSONBackupTaskEntry& entry) const;

  StoreContext& context_;
  ObjectID task_;
  TaskCalendar calendar_;
  Manner manner_;
  qz::YYYYMMDD today_;
  const EntryIdentifiers& identifiers_;
  StoredEntryIdentifiers followed_;
  std::optional<TaskRules> rules_;
  std::set<qz::UniqueID> given_;           // identifiers of entries that are not inserted yet
  bool canGiveWay_ = false;                // whether the log holds entries that added ones could replace
  std::set<PeriodBounds> decidedPeriods_;  // those that added entries decide
  ObjectID firstAdded_ = ObjectID::none;
  std::optional<qz::YYYYMMDD> earliestAdded_;
};

}  // namespace habitra
