#pragma once

#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/YYYYMMDD.h>

#include <optional>

/// What a change that a person makes to one day means for the entries of later days. Where a rule counts, the automatic
/// entries of later days were filled in for what the log said then; they are taken back, and the next pass over the
/// task fills in again.
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

}  // namespace habitra
