#pragma once

#include "Histories.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace habitra::benchmarks {

/// Something to measure, named for the command line. Its histories are made when they are first asked for.
class MeasuredCase {
 public:
  enum class Work : std::uint8_t {
    walk,  ///< the whole walk over each history
    sum,   ///< the least that can be done with a log: one field of each entry is added up
  };

  MeasuredCase(std::string name, Work work, std::function<std::vector<History>()> makeHistories)
      : name_(std::move(name)), work_(work), makeHistories_(std::move(makeHistories)) {}

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::vector<History>& histories() const;
  [[nodiscard]] std::int64_t numDays() const;

  /// Does the work once. histories() has been called before, so that making them is not measured.
  void run() const;

 private:
  std::string name_;
  Work work_;
  std::function<std::vector<History>()> makeHistories_;
  mutable std::vector<History> histories_;
};

/// The three that are compared over ten years with a full completion each day: the daily walk, the walk that counts
/// over the year, and the yardstick.
inline const std::string plainDaily = "plainDaily";
inline const std::string plainYearCounted = "plainYearCounted";
inline const std::string sumOfEntries = "sumOfEntries";

/// The name of believable histories of one length, "numberOfDaysInWeek/toDo/10years". Whatever the length, the case is
/// a hundred years in all (a hundred histories, ten or one): otherwise the processor would learn the one short history
/// by heart, branch by branch, and a year would seem cheaper than it is.
[[nodiscard]] std::string believableName(TaskFrequency::DayMode mode, bool isNegative, std::int64_t years);

inline constexpr std::int64_t lengthsInYears[] = {1, 10, 100};

/// Every case, the plain ones first.
[[nodiscard]] const std::vector<MeasuredCase>& allCases();

}  // namespace habitra::benchmarks
