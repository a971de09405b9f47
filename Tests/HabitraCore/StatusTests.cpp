#include <gtest/gtest.h>
#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraCore/TaskLogEntryPeriod.h>
#include <HabitraCore/TaskMeasure.h>
#include <HabitraCore/TaskProgress.h>
#include <QZDateTime/DecodingError.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "CodingComplaints.h"

namespace habitra {
namespace {

using Status = CompletionStatus::Status;
using Kind = Status::Kind;
using Measured = TaskMeasure::Kind;
using SkipMode = TaskFrequency::SkipMode;
using T = TaskLogEntryType;

TEST(Streak, CountsAndKeepsTheBest) {
  StreakStatus streak{.current = 4, .best = 10};
  streak.increment();
  EXPECT_EQ(streak, (StreakStatus{.current = 5, .best = 10}));
  streak = {.current = 10, .best = 10};
  EXPECT_TRUE(streak.isBest());
  streak.increment();
  EXPECT_EQ(streak, (StreakStatus{.current = 11, .best = 11}));
  streak.reset();
  EXPECT_EQ(streak, (StreakStatus{.current = 0, .best = 11}));
  EXPECT_TRUE((StreakStatus{.current = 10, .best = 11}).nearlyBest());
  streak = {.current = 3, .best = -5};
  streak.reset();
  EXPECT_EQ(streak, StreakStatus());
}

TEST(Streak, MilestonesAreUneven) {
  const auto text = [](std::int64_t count) -> std::string {
    const auto milestone = StreakStatus{.current = count, .best = count}.currentMilestone();
    if (!milestone) return "none";
    const bool exact = milestone->kind == StreakStatus::Milestone::Kind::exact;
    return (exact ? "exact " : "after ") + std::to_string(milestone->value);
  };
  const std::vector<std::pair<std::int64_t, std::string>> expected{
      {-1, "none"},       {0, "none"},        {6, "none"},        {7, "exact 7"},     {13, "after 7"},
      {14, "exact 14"},   {21, "after 14"},   {28, "exact 28"},   {29, "after 28"},   {30, "exact 30"},
      {59, "after 30"},   {60, "exact 60"},   {90, "after 60"},   {99, "after 60"},   {100, "exact 100"},
      {249, "after 200"}, {300, "exact 300"}, {364, "after 300"}, {365, "exact 365"}, {399, "after 365"},
      {400, "exact 400"}, {500, "exact 500"}, {730, "after 700"},
  };
  for (const auto& [count, milestone] : expected) EXPECT_EQ(text(count), milestone) << count;
}

TEST(StreakDeathTest, OverflowStopsTheProgram) {
  StreakStatus streak{.current = std::numeric_limits<std::int64_t>::max(), .best = 0};
  EXPECT_DEATH(streak.increment(), "overflow");
  TaskProgressDiscrete progress{.numCompletions = std::numeric_limits<std::int64_t>::max()};
  EXPECT_DEATH(progress.addUnit(), "overflow");
}

const Status open = Status::positiveIncomplete(SkipMode::willMissWithIndicator);
const Status clean = Status::negativeComplete(SkipMode::willSkipWithIndicator);

TaskProgressCodable byHand(const DatedPeriod& period, std::int64_t expected, std::int64_t numUnits = 0) {
  return progressRecord({}, period, expected, {.numUnits = numUnits});
}

/// One line of a table: what the types do to a period that needs 2 units and has `units`, at a streak of 4, best 9. The
/// outcomes stand in the order of the statuses: the new status, its units and the streak.
struct TableRow {
  std::vector<T> types;
  std::int64_t units;
  std::string outcomes;
};

std::string outcomes(const std::vector<Status>& statuses, std::int64_t units, T type) {
  std::string result;
  for (const Status& status : statuses) {
    const CompletionStatus before{status, byHand({}, 2, units)};
    const auto after = before.applyEntryType({.current = 4, .best = 9}, type);
    EXPECT_EQ(after.streak.best, 9);
    const auto& progress = std::get<TaskProgressDiscrete>(after.completionStatus.codableProgress.base);
    if (!result.empty()) result += ", ";
    result += std::string(caseName(after.completionStatus.status.kind())).substr(8);
    result += " " + std::to_string(progress.numCompletions) + " " + std::to_string(after.streak.current);
  }
  return result;
}

void expectTable(const std::vector<Status>& statuses, const std::vector<TableRow>& table) {
  std::set<T> typesOfTable;
  for (const TableRow& row : table) {
    for (const T type : row.types) {
      EXPECT_EQ(outcomes(statuses, row.units, type), row.outcomes) << caseName(type) << ", units: " << row.units;
      typesOfTable.insert(type);
    }
  }
  EXPECT_EQ(typesOfTable.size(), 16U) << "every type has its line";
}

const std::vector<T> completions{T::completedManuallyFull, T::completedAutomaticallyFull};
const std::vector<T> partialCompletions{T::completedManuallyPartial, T::completedAutomaticallyPartial};
const std::vector<T> skips{T::skippedManuallyFull, T::skippedAutomaticallyFull};
const std::vector<T> misses{T::missedManuallyFull, T::missedAutomaticallyFull};
const std::vector<T> partialMisses{T::missedManuallyPartial, T::missedAutomaticallyPartial};
const std::vector<T> allowedMisses{T::allowableMissManuallyFull, T::allowableMissAutomaticallyFull};
const std::vector<T> runs{T::unknown, T::timerManual, T::timerAutomatic, T::externalHealthData};

TEST(EntryTables, OfATaskToDo) {
  const std::string unchanged = "Incomplete 1 4, Complete 1 4, Miss 1 4, Skip 1 4";
  expectTable({open, Status::positiveComplete(), Status::positiveMiss(), Status::positiveSkip()},
              {{completions, 1, "Complete 2 5, Complete 2 4, Complete 2 5, Complete 2 5"},
               {completions, 3, "Complete 3 5, Complete 3 4, Complete 3 5, Complete 3 5"},
               {partialCompletions, 0, "Incomplete 1 4, Complete 1 4, Miss 1 4, Skip 1 4"},
               {partialCompletions, 1, "Complete 2 5, Complete 2 4, Complete 2 5, Complete 2 5"},
               // Reached before: nothing changes.
               {partialCompletions, 2, "Incomplete 2 4, Complete 2 4, Miss 2 4, Skip 2 4"},
               {skips, 1, "Skip 1 4, Skip 1 4, Skip 1 4, Skip 1 4"},
               {misses, 2, "Miss 2 0, Miss 2 0, Miss 2 0, Miss 2 0"},
               {allowedMisses, 1, unchanged},
               {partialMisses, 1, unchanged},
               {runs, 1, unchanged}});
}

TEST(EntryTables, OfATaskToAvoid) {
  const std::string unchanged = "Complete 1 4, Miss 1 4, AllowedMiss 1 4";
  expectTable({clean, Status::negativeMiss(), Status::negativeAllowedMiss()},
              {{completions, 1, "Complete 1 4, Complete 0 5, Complete 0 5"},
               {allowedMisses, 0, "AllowedMiss 2 4, AllowedMiss 2 4, AllowedMiss 2 4"},
               {misses, 0, "Miss 2 0, Miss 2 0, Miss 2 0"},
               {partialMisses, 0, "Complete 1 4, Miss 1 4, AllowedMiss 1 4"},
               {partialMisses, 1, "Miss 2 0, Miss 2 0, Miss 2 0"},
               // Reached before: only the progress takes it.
               {partialMisses, 2, "Complete 3 4, Miss 3 4, AllowedMiss 3 4"},
               {partialCompletions, 1, unchanged},
               {skips, 1, unchanged},
               {runs, 1, unchanged}});
  const auto modeAfterCompletion = [](Status status) {
    return CompletionStatus{status, byHand({}, 1, 1)}
        .applyEntryType({}, T::completedManuallyFull)
        .completionStatus.status.skipMode();
  };
  EXPECT_EQ(modeAfterCompletion(Status::negativeMiss()), SkipMode::willMissWithoutIndicator);
  EXPECT_EQ(modeAfterCompletion(clean), SkipMode::willSkipWithIndicator) << "a clean period stays as it is";
}

/// The status, the share of the progress and the streak after each of so many taps, the task's streak being 4 before.
std::string taps(CompletionStatus status, bool isPartial, const CompletionStatus::TapRules& rules, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) {
    const auto after = status.next({.current = 4, .best = 9}, isPartial, rules);
    status = after.completionStatus;
    result += (i == 0 ? "" : ", ") + std::string(caseName(status.status.kind())).substr(8) + " " +
              std::to_string(displayedPercentage(status.codableProgress.progressShare())) + " " +
              std::to_string(after.streak.current);
  }
  return result;
}

TEST(Taps, LeadThroughTheStatusesWithEveryMeasure) {
  const auto unchecked = [](Measured kind, std::int64_t expected) {
    return CompletionStatus::unchecked(progressRecord({kind, 3600}, {}, expected));
  };
  const auto kept = [](Measured kind, std::int64_t expected) {
    return CompletionStatus{Status::negativeComplete(SkipMode::willMissWithoutIndicator),
                            progressRecord({kind, 3600}, {}, expected)};
  };
  for (const Measured kind : {Measured::byHand, Measured::quantity, Measured::timed}) {
    EXPECT_EQ(taps(unchecked(kind, 3), true, {}, 5),
              "Incomplete 33 4, Incomplete 66 4, Complete 100 5, Skip 0 4, Incomplete 0 4");
    EXPECT_EQ(taps(unchecked(kind, 3), false, {}, 3), "Complete 100 5, Skip 0 4, Incomplete 0 4");
    EXPECT_EQ(taps(kept(kind, 3), true, {}, 4), "Complete 33 4, Complete 66 4, Miss 100 0, Complete 0 4");
    EXPECT_EQ(taps(kept(kind, 3), true, {.missIsAllowed = true}, 3), "Complete 33 4, Complete 66 4, AllowedMiss 100 4");
  }
  EXPECT_EQ(taps(unchecked(Measured::rings, 1), true, {}, 2), "Complete 100 5, Skip 0 4");
  EXPECT_EQ(taps({Status::positiveMiss(), byHand({}, 3, 1)}, true, {}, 1), "Complete 100 5");
  // Timed to the end, without an entry that says so: one unit more would change nothing.
  CompletionStatus timed = unchecked(Measured::timed, 3);
  std::get<TaskProgressTimer>(timed.codableProgress.base).addDuration(3600);
  EXPECT_EQ(nextEntryType(timed, true, false), T::completedManuallyFull);
  // Nothing to come to: parts are added for ever, a whole one completes.
  const CompletionStatus aimless = CompletionStatus::unchecked(progressRecord({Measured::quantity, 0}, {}, 2));
  EXPECT_EQ(taps(aimless, true, {}, 3), "Incomplete 0 4, Incomplete 0 4, Incomplete 0 4");
  EXPECT_EQ(taps(aimless, false, {}, 1), "Complete 0 5");
}

TEST(Taps, APendingTimerDecidesOnlyWhereItFillsTheTarget) {
  const auto after = [](Status status, double seconds, CompletionStatus::TapRules rules = {}) {
    // Two runs of 20 minutes, of which one is made.
    const auto progress = progressRecord({Measured::timed, 2400}, {}, 2, {.numUnits = 1, .secondsTimed = 60});
    const auto result = CompletionStatus{status, progress}.next({.current = 4, .best = 9}, seconds, rules);
    const auto& timer = std::get<TaskProgressTimer>(result.completionStatus.codableProgress.base);
    return std::string(caseName(result.completionStatus.status.kind())) + " " + std::to_string(timer.numCompletions) +
           " " + std::to_string(std::lround(timer.currentCompletionDuration)) + " " +
           std::to_string(result.streak.current);
  };
  EXPECT_EQ(after(open, 1139), "positiveIncomplete 1 1199 4");
  EXPECT_EQ(after(open, 1140), "positiveComplete 1 1200 5");
  EXPECT_EQ(after(Status::positiveSkip(), 100), "positiveSkip 1 160 4");
  EXPECT_EQ(after(Status::positiveSkip(), 1200), "positiveComplete 1 1260 5");
  EXPECT_EQ(after(Status::positiveMiss(), 100), "positiveMiss 1 160 0") << "the period still counts as a miss";
  EXPECT_EQ(after(Status::positiveMiss(), 1200), "positiveComplete 1 1260 5");
  EXPECT_EQ(after(Status::positiveComplete(), 1200), "positiveComplete 1 1260 5") << "and is not skipped as by a tap";
  EXPECT_EQ(after(clean, 100), "negativeComplete 1 160 4");
  EXPECT_EQ(after(clean, 1200), "negativeMiss 1 1260 0");
  EXPECT_EQ(after(clean, 1200, {.missIsAllowed = true}), "negativeAllowedMiss 1 1260 4");
  EXPECT_EQ(after(Status::negativeMiss(), 1200), "negativeMiss 1 1260 0") << "and is not clean again as by a tap";
  EXPECT_EQ(after(Status::negativeAllowedMiss(), 1200), "negativeAllowedMiss 1 1260 4");
  for (const double none : {0.0, -100.0, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(after(open, none), "positiveIncomplete 1 60 4");
  // A task that is not timed has nothing to add it to.
  const CompletionStatus byHandOpen{open, byHand({}, 1)};
  EXPECT_EQ(byHandOpen.next({.current = 4, .best = 9}, 1e6),
            (StreakedCompletionStatus{byHandOpen, {.current = 4, .best = 9}}));
}

DatedPeriod someWeek() {
  return DatedPeriod(qz::YYYYMMDD(2024, 12, 31), TaskFrequencyPeriodType::week, qz::DayOfWeek::monday);
}

TEST(CodedForms, OfStatusesAndProgress) {
  const CompletionStatus value{open, byHand(someWeek(), 3, 1)};
  EXPECT_EQ(nlohmann::json(value), nlohmann::json::parse(R"({
      "status": {"positiveIncomplete": {"_0": "mwi"}},
      "codableProgress": {"type": "discrete", "base": {
          "expectedCompletions": 3, "numCompletions": 1,
          "period": {"date": 20241231, "period": {
              "periodType": "w", "startDate": 20241230, "finishDate": 20250105, "firstDayOfWeek": 1}}}}})"));
  EXPECT_EQ(nlohmann::json(CompletionStatus::completed(byHand({}, 1)))["status"].dump(), R"({"positiveComplete":{}})");
  const StreakStatus streak{.current = 1, .best = 2};
  EXPECT_EQ(nlohmann::json(streak).dump(), R"({"best":2,"current":1})");
  EXPECT_EQ(nlohmann::json(streak).get<StreakStatus>(), streak);
}

TEST(CodedForms, RefuseWhatTheyDoNotKnow) {
  const CompletionStatus value{open, byHand(someWeek(), 1)};
  for (const char* const status :
       {R"({"positive": {}})", R"({})", R"("positiveMiss")", R"({"negativeComplete": {"_0": "x"}})",
        R"({"positiveMiss": {}, "positiveSkip": {}})"}) {
    nlohmann::json json = value;
    json["status"] = nlohmann::json::parse(status);
    EXPECT_THROW(static_cast<void>(json.get<CompletionStatus>()), qz::DecodingError) << status;
  }
}

/// What a reader of T says when the member at `place` is each of `wrong`, and when it is missing.
template <typename T>
void expectRefusedByName(const T& value, const std::string& place, const std::vector<nlohmann::json>& wrong) {
  const nlohmann::json::json_pointer pointer(place);
  const std::string start = "Unable to read \"" + pointer.back() + "\"";
  nlohmann::json json = value;
  for (const nlohmann::json& member : wrong) {
    json[pointer] = member;
    EXPECT_EQ(complaint<T>(json), start + " from " + member.dump()) << place;
  }
  json[pointer.parent_pointer()].erase(pointer.back());
  EXPECT_EQ(complaint<T>(json), start + ": missing") << place;
}

TEST(CodedForms, RefuseValuesOfTheWrongKindAndMissingKeysByName) {
  const std::vector<nlohmann::json> noCounts{1.9, 2.0, true, "1"};
  for (const char* const place : {"/current", "/best"}) expectRefusedByName(StreakStatus(), place, noCounts);
  for (const char* const place :
       {"/type", "/base", "/base/period", "/base/period/date", "/base/period/period", "/base/period/period/periodType",
        "/base/period/period/startDate", "/base/period/period/finishDate", "/base/period/period/firstDayOfWeek"})
    expectRefusedByName(byHand(someWeek(), 1), place, {});
  const CompletionStatus value{open, byHand(someWeek(), 1)};
  for (const char* const place : {"/status", "/status/positiveIncomplete/_0", "/codableProgress"})
    expectRefusedByName(value, place, {});
  for (const char* const place : {"/type", "/from", "/to", "/date"})
    expectRefusedByName(TaskLogEntryPeriod(someWeek()), place, {});
}

}  // namespace
}  // namespace habitra
