#pragma once

#include <HabitraCore/LoggedEntry.h>
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
[[nodiscard]] std::optional<DatedPeriod> countedPeriod(const LogRow& row, const std::optional<TaskRules>& rules);

/// Whether it counts for this period.
[[nodiscard]] bool countsFor(const LogRow& row, const TaskFrequencyPeriod& period,
                             const std::optional<TaskRules>& rules);

/// Whether data decided the period: an automatic completion, miss or allowed miss that reports a share. What a pass
/// fills in, or seals for a past that was judged, has none.
[[nodiscard]] bool isMeasured(const LoggedEntry& entry);

/// Whether a pass filled it in: an automatic skip, or an automatic miss or allowed miss that data did not decide.
[[nodiscard]] bool isFilledIn(const TaskLogEntryEntity& row);
[[nodiscard]] bool isFilledIn(const LogRow& row);
[[nodiscard]] bool isFilledIn(const LoggedEntry& entry);

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
  [[nodiscard]] std::vector<LogKey> refutedBy(const TaskLogEntryEntity& row) const;

  /// Of several days that are decided anew, those of later days that follow from any of them. The log is read once, and
  /// only where such days are. In order of day.
  [[nodiscard]] std::vector<LogKey> refutedAfter(const std::set<qz::YYYYMMDD>& days) const;

  /// The entries that an earlier beginning of the history refutes: those of the counting period, or of the period that
  /// is summed up, which held `beginning`, the first day until now. Only a part of it had been asked for.
  [[nodiscard]] std::vector<LogKey> refutedByEarlierBeginning(qz::YYYYMMDD beginning) const;

  /// Removes what refutedBy() gives, for somebody who writes entry after entry: days that hold nothing filled in any
  /// more are not looked through again, as long as entries come in order of day. From the first call on nobody else may
  /// write to the log, and what is written is to be said.
  void removeRefutedBy(const TaskLogEntryEntity& row);
  /// Something was written on this day or before.
  void wroteUpTo(qz::YYYYMMDD day);

 private:
  /// Later days with nothing filled in, up to the completion that ended the look.
  struct ClearedDays {
    std::int32_t first;
    std::int32_t last;
    std::optional<qz::YYYYMMDD> completion{};
  };

  /// The period of an entry that refutes any.
  [[nodiscard]] std::optional<DatedPeriod> refutedPeriod(const TaskLogEntryEntity& row) const;
  void appendOfPeriod(const TaskFrequencyPeriod& period, std::vector<LogKey>& refuted) const;
  /// Appends those that follow from a day, and gives the days that were looked through.
  std::optional<ClearedDays> appendFollowing(qz::YYYYMMDD day, const std::optional<ClearedDays>& cleared,
                                             std::vector<LogKey>& refuted) const;
  /// Appends those of some days, up to the first full completion where that is the end; gives its day.
  std::optional<std::int32_t> appendBetween(std::int32_t from, std::int32_t to, bool endAtCompletion,
                                            std::vector<LogKey>& refuted) const;

  StoreContext& context_;
  const ObjectID task_;
  const std::optional<TaskRules> rules_;
  std::optional<ClearedDays> cleared_;
};

}  // namespace habitra
