#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskMeasure.h>
#include <HabitraCore/TaskPause.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace habitra {

/// All that decides what a history comes to, beside the entries and the days. Whoever adds to it adds to fingerprint().
struct TaskRules {
  TaskFrequency frequency;
  bool isNegative = false;  ///< a task to avoid
  qz::DayOfWeek firstDayOfWeek = qz::DayOfWeek::sunday;
  std::optional<qz::YYYYMMDD> referenceDate;  ///< the anchor of fortnights and day intervals
  TaskMeasure measure;
  std::vector<TaskPause> pauses;  ///< in any order; they may overlap

  friend bool operator==(const TaskRules&, const TaskRules&) = default;
};

/// A number for the rules and the first day of a history that is the same in every run and build, and that differs, but
/// for chance, where a walk could come to something else; also when the walk itself has learned to judge differently.
[[nodiscard]] std::uint64_t fingerprint(const TaskRules& rules, const qz::YYYYMMDD& created);

}  // namespace habitra
