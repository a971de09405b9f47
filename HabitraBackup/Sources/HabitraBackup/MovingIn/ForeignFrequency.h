#pragma once

#include <HabitraCore/TaskFrequency.h>

#include <cstdint>
#include <string>

namespace habitra {

/// The rule that comes nearest to one of another tracker.
struct ForeignFrequency {
  TaskFrequency frequency = TaskFrequency::everyDay();
  std::string remark;  ///< what became of the rule; empty where it is the same
};

/// A rule for "on `times` days in any `days` days". The same are: every day (as many times as days), so many days a
/// week (7), fortnight (14), month (30 or 31) and year (365 or 366). The others become, with a remark:
/// - once in 2 to 30 days: every so many days;
/// - more often than days: every day;
/// - the rest: the same share of the days of the shortest such period that is not shorter, of a year at most.
/// REQUIRES: times >= 1, days >= 1.
[[nodiscard]] ForeignFrequency frequencyOfTimesInDays(std::int64_t times, std::int64_t days);

}  // namespace habitra
