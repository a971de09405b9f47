#pragma once

#include <HabitraCore/TaskFrequency.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Which frequencies are fit to be entered, and which are at least fit to be judged.
namespace habitra {

/// A field of a frequency that is out of its range.
struct FrequencyProblem {
  std::string_view field;      ///< as it is coded: "dayInterval"
  bool countsMembers = false;  ///< the field is a set, and the numbers say how many days it holds
  std::int64_t found = 0;      ///< what the field is
  std::int64_t least = 0;      ///< what it may be, both ends included
  std::int64_t most = 0;

  /// "dayInterval must be from 2 to 30, not 31"; "days must hold at least one day".
  [[nodiscard]] std::string message() const;

  friend bool operator==(const FrequencyProblem&, const FrequencyProblem&) = default;
};

/// What a person has to mend before a frequency can be used, in the order of the fields; nothing when it is good. Only
/// the fields that its mode uses are looked at:
/// - days, in specificDaysOfWeek, and daysOfMonth, in specificDaysOfMonth: at least one day;
/// - numPartialCompletions, always: 1 to 32,767, which is what a store holds;
/// - numCompletions, in the counted-days modes: 1 to the days of the longest such period (7, 14, 31, 366); in the
///   aggregate modes 1 to 32,767;
/// - dayInterval, in dayInterval: 2 to 30.
[[nodiscard]] std::vector<FrequencyProblem> problems(const TaskFrequency& frequency);

/// Whether the rules can judge by a frequency, wherever it came from: there is some weekday in specificDaysOfWeek, some
/// usable day in specificDaysOfMonth, an interval of 2 to 30 in dayInterval. Counts may be anything: below 1 they count
/// as 1, and a period that is asked for more days than it has is asked for all of them.
[[nodiscard]] bool canBe(const TaskFrequency& frequency);

}  // namespace habitra
