#pragma once

#include <HabitraModel/Store/ObjectID.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace habitra {

/// Resolves the double identifiers that mirroring leaves behind.
///
/// Tasks with the same `uniqueId` are one task when title, frequency and creation (to the second) agree. The older row
/// survives with its attributes, and what belongs to the other goes over to it:
/// - entries of the log are united that agree in day, type, second of creation and, but for what the system measured,
///   amounts, one to one, those with the same `uniqueId` first, the older row staying; where only one of the two tasks
///   has a person's full entry for a period, automatic ones of the other for that period go, as they go when it is
///   recorded; of two automatic full ones a completion stays, else the older;
/// - notes, counters, timers, reminders and categories that both have are kept once, all others of both;
/// - of the notification settings, temporal data and share of both, those that were changed last stay;
/// - the page is taken over where the survivor has none.
/// Tasks that are not one keep apart: the newer gets a new identifier (TaskProcessor::cleanUpDuplicatedTaskIDs).
///
/// Rows of other entities with the same identifier are one when they are alike in everything but their state towards
/// the cloud; links to them then lead to the older. Otherwise the newer gets a new identifier. Of several rows of what
/// a task has one of, the one that counts stays (RowOfTask.h), and of a setting those that do (StoreSettings.h).
///
/// So no entry, note or other record of a person is lost, of what there can be one of the last choice stays, and no
/// identifier is double afterwards. Figures are not recomputed: a pass does that.
///
/// Works on the queue of the context that it is given.
class TaskDeduplicator {
 public:
  /// Tasks that are probably one.
  struct DuplicateGroup {
    std::int64_t hash;             ///< of `uniqueId`, title, frequency and creation
    std::set<ObjectID> objectIDs;  ///< of the tasks, two or more

    friend bool operator==(const DuplicateGroup&, const DuplicateGroup&) = default;
  };

  /// What a run did.
  struct Report {
    std::size_t unitedTasks = 0;   ///< rows of tasks that went
    std::size_t renamedTasks = 0;  ///< tasks with a new identifier
    std::size_t unitedRows = 0;    ///< rows of other entities that went because of their identifier
    std::size_t renamedRows = 0;   ///< rows of other entities with a new identifier

    friend bool operator==(const Report&, const Report&) = default;
  };

  /// `deduplicationId` names the run in the log.
  explicit TaskDeduplicator(std::optional<qz::UniqueID> deduplicationId = std::nullopt);

  [[nodiscard]] const std::optional<qz::UniqueID>& deduplicationId() const { return deduplicationId_; }

  /// The tasks with the same identifier and the same hash, in order of their oldest.
  [[nodiscard]] static std::vector<DuplicateGroup> duplicateGroups(StoreContext& context);

  /// Resolves everything inside the caller's unit, which it begins when none is open; the caller saves. Without double
  /// identifiers nothing is changed.
  Report deduplicate(StoreContext& context) const;

 private:
  std::optional<qz::UniqueID> deduplicationId_;
};

}  // namespace habitra
