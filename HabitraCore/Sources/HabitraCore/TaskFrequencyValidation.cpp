#include <HabitraCore/TaskFrequencyValidation.h>

#include <limits>
#include <utility>

namespace habitra {

namespace {

using Mode = TaskFrequency::DayMode;

constexpr std::int64_t mostStored = std::numeric_limits<std::int16_t>::max();

/// Collects the fields that are out of range.
class Findings {
 public:
  void checkMembers(std::string_view field, std::int64_t found, std::int64_t most) {
    add({.field = field, .countsMembers = true, .found = found, .least = 1, .most = most});
  }
  void check(std::string_view field, std::int64_t found, std::int64_t least, std::int64_t most) {
    add({.field = field, .found = found, .least = least, .most = most});
  }
  [[nodiscard]] std::vector<FrequencyProblem> take() { return std::move(problems_); }

 private:
  void add(const FrequencyProblem& problem) {
    if (problem.found < problem.least || problem.found > problem.most) problems_.push_back(problem);
  }

  std::vector<FrequencyProblem> problems_;
};

void checkDays(const TaskFrequency& frequency, Findings& findings) {
  if (frequency.dayMode == Mode::specificDaysOfWeek)
    findings.checkMembers("days", frequency.days.count(), qz::DayOfWeek::every().count());
  if (frequency.dayMode == Mode::specificDaysOfMonth)
    findings.checkMembers("daysOfMonth", frequency.daysOfMonth.count(), DaysOfMonth::every().count());
}

void checkInterval(const TaskFrequency& frequency, Findings& findings) {
  if (frequency.dayMode != Mode::dayInterval) return;
  findings.check("dayInterval", frequency.dayInterval, TaskFrequency::dailyCompletionMinIntervalDays,
                 TaskFrequency::dailyCompletionMaxIntervalDays);
}

}  // namespace

std::string FrequencyProblem::message() const {
  const std::string name(field);
  if (countsMembers) return name + " must hold at least one day";
  return name + " must be from " + std::to_string(least) + " to " + std::to_string(most) + ", not " +
         std::to_string(found);
}

std::vector<FrequencyProblem> problems(const TaskFrequency& frequency) {
  Findings findings;
  checkDays(frequency, findings);
  findings.check("numPartialCompletions", frequency.numPartialCompletions, 1, mostStored);
  if (frequency.isCountedDays()) {
    findings.check("numCompletions", frequency.numCompletions, 1,
                   nominalLength(frequency.periodTypeForCompletionCountCalculation()));
  } else if (frequency.isAggregate()) {
    findings.check("numCompletions", frequency.numCompletions, 1, mostStored);
  }
  checkInterval(frequency, findings);
  return findings.take();
}

bool canBe(const TaskFrequency& frequency) {
  Findings findings;
  checkDays(frequency, findings);
  checkInterval(frequency, findings);
  return findings.take().empty();
}

}  // namespace habitra
