#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <vector>

namespace habitra {

/// The last `count` periods that are over before `today` and on which a task of these rules would have been due, had
/// nothing been done before: when all of them are completed, and the history begins with the first, the streak is
/// `count`. In order of days.
///
/// To do, an interval is counted back from the reference date, or without one from `today`, so that the task is due on
/// these days again; days are counted back through the last ones of each counting period, on which they would have
/// been asked for. To avoid, each day is one, in the specific-days modes each on which the task is due.
///
/// Throws qz::Error where they would begin before the calendars that people keep. REQUIRES: count >= 0, a frequency
/// that a HistoryWalk supports.
[[nodiscard]] std::vector<TaskFrequencyPeriod> lastDuePeriods(const TaskRules& rules, qz::YYYYMMDD today,
                                                              std::int64_t count);

}  // namespace habitra
