#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace habitra {

/// The day of an entry and the period that it counts for: the one stored with it, else that of its day by the rules.
/// None when neither can be told.
[[nodiscard]] std::optional<DatedPeriod> countedPeriod(const TaskLogEntryEntity& row,
                                                       const std::optional<TaskRules>& rules);

/// Whether a pass fills in entries of the stored type: automatic skips, misses and allowed misses.
[[nodiscard]] bool isFilledIn(const TaskLogEntryEntity& row);

/// What passes have filled into the log of one task, and what becomes of it when somebody says something else. Belongs
/// to the queue of its context, which must live longer.
class FilledInEntries {
 public:
  /// `rules`: the task's; none where they cannot be read.
  FilledInEntries(StoreContext& context, const TaskEntity& task, std::optional<TaskRules> rules);

  /// The entries that `row`, an entry of the task, refutes: those of its period that its type takes the place of, and,
  /// where it takes the place of any, those of later days that follow from its day (followingDays()): of the rest of
  /// the counting period, or of the days up to the next full completion. In order of day. An entry that was filled in
  /// itself, and one that decides nothing, refutes none.
  [[nodiscard]] std::vector<TaskLogEntryEntity> refutedBy(const TaskLogEntryEntity& row) const;

  /// Of several days that are decided anew, those of later days that follow from any of them. The log is read once, and
  /// only where such days are. In order of day.
  [[nodiscard]] std::vector<TaskLogEntryEntity> refutedAfter(const std::set<qz::YYYYMMDD>& days) const;

  /// The entries that an earlier beginning of the history refutes: those of the counting period, or of the period that
  /// is summed up, which held `beginning`, the first day until now. Only a part of it had been asked for.
  [[nodiscard]] std::vector<TaskLogEntryEntity> refutedByEarlierBeginning(qz::YYYYMMDD beginning) const;

 private:
  /// Appends those that follow from a day, up to the day `end` where there is one.
  void appendFollowing(qz::YYYYMMDD day, std::optional<qz::YYYYMMDD> end,
                       std::vector<TaskLogEntryEntity>& refuted) const;
  /// Appends those of some days, up to the first full completion where that is the end; gives whether there was one.
  bool appendBetween(std::int32_t from, std::int32_t to, bool endAtCompletion,
                     std::vector<TaskLogEntryEntity>& refuted) const;

  StoreContext& context_;
  const ObjectID task_;
  const std::optional<TaskRules> rules_;
};

}  // namespace habitra
