#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskRules.h>

#include <cstdint>
#include <vector>

/// Histories to walk, the same in every run.
namespace habitra::benchmarks {

/// A task with its log as a pass leaves it behind: every closed period is decided, so that a walk has nothing to fill
/// in.
struct History {
  TaskRules rules;
  HistoryScope scope;
  std::vector<LoggedEntry> log;

  [[nodiscard]] std::int64_t numDays() const { return scope.created.distance(scope.today) + 1; }
};

/// Rules of this mode as people choose them; in most modes a completion is made of two partial ones.
[[nodiscard]] TaskRules usualRules(TaskFrequency::DayMode mode, bool isNegative);

/// What somebody might have recorded who mostly keeps the task: most due days done and some missed, some skipped, some
/// done in part, now and then a day more than was asked for, and a week of rest each summer. Of a task to avoid: slips,
/// about as many as the rule allows. `seed` chooses the history.
[[nodiscard]] History believableHistory(TaskRules rules, std::int64_t years, std::uint64_t seed);

/// A full completion on each day, and nothing else.
[[nodiscard]] History plainHistory(const TaskRules& rules, std::int64_t years);

}  // namespace habitra::benchmarks
