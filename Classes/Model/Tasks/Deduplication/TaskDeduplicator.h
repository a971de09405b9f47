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
/// survives, and what belongs to the others goes over to it:
/// - the log becomes what it would be had all been recorded for one task in order of creation (by moment, then by
///   identifier). The same identifier is one entry: no moment of change is kept, so the larger amount stays, of equal
///   ones the greater content. Other entries are one where they come from different logs and agree in day, type, second
///   of creation (which must be known) and amounts, one to one; that which was made first stays. What a person recorded
///   later takes the place of the other completions, misses and skips of its period (supersedes()). What was filled in
///   without knowing an entry that refutes it goes (FilledInEntries), and the next pass begins before it. What stood
///   side by side in one of the logs does not contradict itself;
/// - what entries have asked of the health store is one request by creation, data and type, as far as it has come;
/// - counters are one like entries; notes, timers, reminders and categories that both have are kept once, all others of
///   both;
/// - of the notification settings, temporal data, share, status and change of difficulty, those that were changed last
///   stay; of the page and the other attributes, which bear no moment, those of the older row, and the page of another
///   where it has none.
/// Tasks that are not one keep apart: the newer gets a new identifier (TaskProcessor::cleanUpDuplicatedTaskIDs).
///
/// Rows of other entities with the same identifier are one when they are alike in everything but their state towards
/// the cloud (entries and counters when they belong to one task); links to them then lead to the older. Otherwise the
/// newer gets a new identifier. Of several rows of what a task has one of, the one that counts stays (RowOfTask.h), and
/// of a setting those that do (StoreSettings.h).
///
/// What the united log, its counters and requests say is decided by their content, so that all devices come to the
/// same. By row number, on which devices do not agree, are decided: which row of a task or entry stays; attributes that
/// bear no moment of change; what was changed in the same moment; which of two rows of any entity but tasks that are
/// not one keeps the identifier (of tasks, that which was created first does).
///
/// No identifier is double afterwards, and nothing that a person recorded is lost that would not be replaced when it is
/// recorded for one task. Figures are not recomputed, nor is anything filled in: a pass does that.
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
