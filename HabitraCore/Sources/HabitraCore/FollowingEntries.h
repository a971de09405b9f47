#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// What a change means for entries that stand in the log.
///
/// A person changes one day: where a rule counts, the automatic entries of later days were filled in for what the log
/// said then; they are taken back, and the next pass over the task fills in again. A person changes the frequency: the
/// past stays as it was judged (HistoryWalk::seals()), and the period that is open goes over to the new one.
namespace habitra {

/// The later days whose automatic entries follow from a day.
struct FollowingDays {
  qz::YYYYMMDD first;
  std::optional<qz::YYYYMMDD> last;  ///< none: all up to today
  /// Only up to the first of these days that is completed: from there on, days are counted anew.
  bool endAtCompletion = false;

  friend bool operator==(const FollowingDays&, const FollowingDays&) = default;
};

/// Counted days: the rest of the counting period that holds `date`. Day intervals: the days up to the next completed
/// one. None where no day follows from another: specific days, and periods that are summed up as one.
[[nodiscard]] std::optional<FollowingDays> followingDays(const TaskRules& rules, const qz::YYYYMMDD& date);

/// Whether an entry of this type on such a day is taken back: automatic skips, misses and allowed misses. What a person
/// entered, and every completion, stays.
[[nodiscard]] bool followsFromEarlierDays(TaskLogEntryType type);

/// The type that a full failure has to have: a miss or an allowed miss, by hand or automatic as it was. Other types
/// stay. To avoid, failures of a counting period are allowed in the order of their days; so one that is recorded late
/// for an earlier day can change those after it (see HistoryWalk::retypings()).
[[nodiscard]] TaskLogEntryType retypedFailure(TaskLogEntryType type, bool missIsAllowed);

/// An entry that counts for another period from now on.
struct Restamping {
  std::int64_t order = 0;  ///< LoggedEntry::order of the entry
  std::int32_t entryDate = 0;
  TaskFrequencyPeriod period;  ///< that holds its day

  friend bool operator==(const Restamping&, const Restamping&) = default;
};

/// The entries to re-stamp when a task gets `newRules`: those that count for `current`, the period that holds today by
/// the old ones. In the order of `entries`.
[[nodiscard]] std::vector<Restamping> restampings(const TaskFrequencyPeriod& current, const TaskRules& newRules,
                                                  std::span<const LoggedEntry> entries);

}  // namespace habitra
