#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>

namespace habitra {

/// All that decides what a history comes to, beside the entries and the days. Whoever adds to it adds to fingerprint().
struct TaskRules {
  TaskFrequency frequency;
  bool isNegative = false;  ///< a task to avoid
  qz::DayOfWeek firstDayOfWeek = qz::DayOfWeek::sunday;
  std::optional<qz::YYYYMMDD> referenceDate;  ///< the anchor of fortnights and day intervals

  friend bool operator==(const TaskRules&, const TaskRules&) = default;
};

/// Whether the calendar alone makes `date` a due day. REQUIRES: HistoryWalk::supports(frequency).
[[nodiscard]] bool isDueByCalendar(const TaskFrequency& frequency, const qz::YYYYMMDD& date);

/// A number for the rules and the first day of a history that is the same in every run and build, and that differs, but
/// for chance, where a walk could come to something else; also when the walk itself has learned to judge differently.
[[nodiscard]] std::uint64_t fingerprint(const TaskRules& rules, const qz::YYYYMMDD& created);

}  // namespace habitra
