#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
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
#include <utility>
#include <vector>

namespace habitra {

class StoreContext;
struct TaskEntity;

/// The identifiers that entries of a document have in the store, by those that they have in the document.
using StoredEntryIdentifiers = std::map<qz::UniqueID, std::optional<std::string>>;

/// Brings the entries of one task of a document into the log of one stored task, in the context's open unit.
class LogImport {
 public:
  /// REQUIRES: `context` and `identifiers` outlive this object, and a unit is open.
  LogImport(StoreContext& context, const TaskEntity& task, TaskCalendar calendar, qz::Moment now,
            const EntryIdentifiers& identifiers);

  /// Lets storedIdentifiers() tell of the entries that these timers name. To be called before the entries come.
  void follow(std::span<const TaskTimerEntity> timers);

  /// Adds what is not there yet.
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

  void add(const HabitraJSONBackupTaskEntry& entry);
  void noteIdentifier(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& stored);
  bool update(const LogKey& key, const HabitraJSONBackupTaskEntry& entry);
  [[nodiscard]] std::vector<LogCandidate> candidates() const;
  [[nodiscard]] Period periodByFrequency(qz::YYYYMMDD day) const;
  [[nodiscard]] Period period(const HabitraJSONBackupTaskEntry& entry) const;
  [[nodiscard]] bool givesWay(const LogCandidate& stored) const;
  /// Such an entry would be deleted by the next pass, so it is not brought in.
  [[nodiscard]] bool liesAfterToday(const HabitraJSONBackupTaskEntry& entry) const;

  StoreContext& context_;
  ObjectID task_;
  TaskCalendar calendar_;
  qz::Moment now_;
  qz::YYYYMMDD today_;
  const EntryIdentifiers& identifiers_;
  StoredEntryIdentifiers followed_;
  std::optional<TaskRules> rules_;
  bool canGiveWay_ = false;                // whether the log holds entries that added ones could replace
  std::set<PeriodBounds> decidedPeriods_;  // those of the full entries that were added
  std::optional<qz::YYYYMMDD> earliestAdded_;
};

}  // namespace habitra
