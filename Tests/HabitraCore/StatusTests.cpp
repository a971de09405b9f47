#include <gtest/gtest.h>
#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskLogEntryPeriod.h>
#include <HabitraCore/TaskProgress.h>
#include <QZDateTime/DecodingError.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {
namespace {

using Status = CompletionStatus::Status;
using Kind = Status::Kind;
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
  TaskFrequency frequency{.dayMode = TaskFrequency::DayMode::aggregateOverYear,
                          .numPartialCompletions = std::int64_t{1} << 40,
                          .numCompletions = std::int64_t{1} << 40};
  EXPECT_DEATH(static_cast<void>(frequency.numPartialCompletionsPerPeriod()), "overflow");
}

const std::array<Status, 10> everyStatus{Status::positiveIncomplete(SkipMode::willMissWithIndicator),
                                         Status::positiveIncomplete(SkipMode::willSkipWithoutIndicator),
                                         Status::positiveComplete(),
                                         Status::positiveMiss(),
                                         Status::positiveSkip(),
                                         Status::negativeComplete(SkipMode::willMissWithoutIndicator),
                                         Status::negativeComplete(SkipMode::willSkipWithIndicator),
                                         Status::negativeComplete(SkipMode::willMissWithIndicator),
                                         Status::negativeMiss(),
                                         Status::negativeAllowedMiss()};

/// The status, units and streak after one entry, of a period that needs 2 units, has `units`, and a streak of 4 of 9.
std::string after(Status status, std::int64_t units, T type) {
  const CompletionStatus before{status, progressByHand({}, 2, units)};
  const auto result = before.applyEntryType({.current = 4, .best = 9}, type);
  EXPECT_EQ(result.streak.best, 9);
  const auto& progress = std::get<TaskProgressDiscrete>(result.completionStatus.codableProgress.base);
  return std::string(caseName(result.completionStatus.status.kind())) + " " + std::to_string(progress.numCompletions) +
         " " + std::to_string(result.streak.current);
}

TEST(EntryTables, OfATaskToDo) {
  const Status open = everyStatus[0];
  for (const T full : {T::completedManuallyFull, T::completedAutomaticallyFull}) {
    EXPECT_EQ(after(open, 1, full), "positiveComplete 2 5");
    EXPECT_EQ(after(Status::positiveComplete(), 3, full), "positiveComplete 3 4");
    EXPECT_EQ(after(Status::positiveMiss(), 0, full), "positiveComplete 2 5");
  }
  for (const T partial : {T::completedManuallyPartial, T::completedAutomaticallyPartial}) {
    EXPECT_EQ(after(open, 0, partial), "positiveIncomplete 1 4");
    EXPECT_EQ(after(open, 1, partial), "positiveComplete 2 5");
    EXPECT_EQ(after(Status::positiveMiss(), 0, partial), "positiveMiss 1 4");
    EXPECT_EQ(after(Status::positiveMiss(), 1, partial), "positiveComplete 2 5");
    EXPECT_EQ(after(Status::positiveSkip(), 2, partial), "positiveSkip 2 4") << "reached before: nothing changes";
    EXPECT_EQ(after(Status::positiveComplete(), 1, partial), "positiveComplete 2 4");
  }
  for (const T skip : {T::skippedManuallyFull, T::skippedAutomaticallyFull})
    EXPECT_EQ(after(Status::positiveComplete(), 2, skip), "positiveSkip 2 4");
  for (const T miss : {T::missedManuallyFull, T::missedAutomaticallyFull})
    EXPECT_EQ(after(Status::positiveComplete(), 2, miss), "positiveMiss 2 0");
}

TEST(EntryTables, OfATaskToAvoid) {
  const Status clean = Status::negativeComplete(SkipMode::willSkipWithIndicator);
  for (const T full : {T::completedManuallyFull, T::completedAutomaticallyFull}) {
    EXPECT_EQ(after(clean, 1, full), "negativeComplete 1 4") << "a clean period stays as it is";
    EXPECT_EQ(after(Status::negativeMiss(), 2, full), "negativeComplete 0 5");
    EXPECT_EQ(after(Status::negativeAllowedMiss(), 2, full), "negativeComplete 0 5");
  }
  const CompletionStatus missed{Status::negativeMiss(), progressByHand({}, 1, 1)};
  EXPECT_EQ(missed.applyEntryType({}, T::completedManuallyFull).completionStatus.status.skipMode(),
            SkipMode::willMissWithoutIndicator);
  for (const T allowed : {T::allowableMissManuallyFull, T::allowableMissAutomaticallyFull})
    EXPECT_EQ(after(Status::negativeMiss(), 0, allowed), "negativeAllowedMiss 2 4");
  for (const T miss : {T::missedManuallyFull, T::missedAutomaticallyFull})
    EXPECT_EQ(after(clean, 0, miss), "negativeMiss 2 0");
  for (const T partial : {T::missedManuallyPartial, T::missedAutomaticallyPartial}) {
    EXPECT_EQ(after(clean, 0, partial), "negativeComplete 1 4");
    EXPECT_EQ(after(clean, 1, partial), "negativeMiss 2 0");
    EXPECT_EQ(after(Status::negativeAllowedMiss(), 2, partial), "negativeAllowedMiss 3 4");
  }
}

RC_GTEST_PROP(EntryTables, StayInTheirFamilyAndLeaveWhatTheyDoNotName, ()) {
  const Status status = *rc::gen::elementOf(everyStatus);
  const T type = *rc::gen::map(rc::gen::inRange<std::size_t>(0, 16),
                               [](std::size_t i) { return RawValueTable<T>::rows[i].value; });
  const CompletionStatus before{status, progressByHand({}, *rc::gen::inRange(1, 4), *rc::gen::inRange(0, 5))};
  const StreakStatus streak{.current = *rc::gen::inRange(0, 9), .best = 8};
  const auto result = before.applyEntryType(streak, type);
  RC_ASSERT(result.completionStatus.isNegative() == before.isNegative());
  RC_ASSERT(result.streak.best >= result.streak.current);
  const bool named = before.isNegative()
                         ? isCompletedFull(type) || isMissedFullOrPartial(type) || isAllowableMissFull(type)
                         : isCompletedFullOrPartial(type) || isMissedFull(type) || isSkipped(type);
  if (!named) RC_ASSERT(result == (StreakedCompletionStatus{before, streak}));
}

DatedPeriod someWeek() {
  return DatedPeriod(qz::YYYYMMDD(2024, 12, 31), TaskFrequencyPeriodType::week, qz::DayOfWeek::monday);
}

TEST(CodedForms, OfStatusesAndProgress) {
  for (const Status& status : everyStatus) {
    for (const std::int64_t expected : {1, 3}) {
      // More than needed is kept as it is.
      const CompletionStatus value{status, progressByHand(someWeek(), expected, 5)};
      EXPECT_EQ(nlohmann::json(value).get<CompletionStatus>(), value);
    }
  }
  const CompletionStatus open{everyStatus[0], progressByHand(someWeek(), 3, 1)};
  EXPECT_EQ(nlohmann::json(open), nlohmann::json::parse(R"({
      "status": {"positiveIncomplete": {"_0": "mwi"}},
      "codableProgress": {"type": "discrete", "base": {
          "expectedCompletions": 3, "numCompletions": 1,
          "period": {"date": 20241231, "period": {
              "periodType": "w", "startDate": 20241230, "finishDate": 20250105, "firstDayOfWeek": 1}}}}})"));
  EXPECT_EQ(nlohmann::json(CompletionStatus::completed(progressByHand({}, 1)))["status"].dump(),
            R"({"positiveComplete":{}})");
  const StreakStatus streak{.current = 1, .best = 2};
  EXPECT_EQ(nlohmann::json(streak).dump(), R"({"best":2,"current":1})");
  EXPECT_EQ(nlohmann::json(streak).get<StreakStatus>(), streak);
  const TaskLogEntryPeriod period(someWeek());
  EXPECT_EQ(nlohmann::json(period).dump(), R"({"date":20241231,"from":20241230,"to":20250105,"type":"w"})");
  EXPECT_EQ(nlohmann::json(period).get<TaskLogEntryPeriod>(), period);
}

TEST(CodedForms, RefuseWhatTheyDoNotKnow) {
  const CompletionStatus open{everyStatus[0], progressByHand(someWeek(), 1)};
  for (const char* const type : {"ring", "timers", ""}) {
    nlohmann::json json = open;
    json["codableProgress"]["type"] = type;
    EXPECT_THROW(static_cast<void>(json.get<CompletionStatus>()), qz::DecodingError) << type;
  }
  for (const char* const status :
       {R"({"positive": {}})", R"({})", R"("positiveMiss")", R"({"negativeComplete": {"_0": "x"}})",
        R"({"positiveMiss": {}, "positiveSkip": {}})"}) {
    nlohmann::json json = open;
    json["status"] = nlohmann::json::parse(status);
    EXPECT_THROW(static_cast<void>(json.get<CompletionStatus>()), qz::DecodingError) << status;
  }
}

/// What a reader of T says when the member at `place` is each of `wrong`, and when it is missing.
template <typename T>
void expectRefusedByName(const T& value, const std::string& place, const std::vector<nlohmann::json>& wrong) {
  const nlohmann::json::json_pointer pointer(place);
  const auto complaint = [&](const nlohmann::json& json) -> std::string {
    try {
      static_cast<void>(json.get<T>());
    } catch (const qz::DecodingError& error) {
      return error.what();
    }
    return "nothing";
  };
  const std::string start = "Unable to read \"" + pointer.back() + "\"";
  nlohmann::json json = value;
  for (const nlohmann::json& member : wrong) {
    json[pointer] = member;
    EXPECT_EQ(complaint(json), start + " from " + member.dump()) << place;
  }
  json[pointer.parent_pointer()].erase(pointer.back());
  EXPECT_EQ(complaint(json), start + ": missing") << place;
}

TEST(CodedForms, RefuseValuesOfTheWrongKindAndMissingKeysByName) {
  const std::vector<nlohmann::json> noCounts{1.9, 2.0, true, "1"};
  const std::vector<nlohmann::json> noShares{true, "0.5"};
  for (const char* const place : {"/current", "/best"}) expectRefusedByName(StreakStatus(), place, noCounts);
  for (const char* const place : {"/base/expectedCompletions", "/base/numCompletions"})
    expectRefusedByName(progressByHand(someWeek(), 3), place, noCounts);
  for (const char* const place : {"/base/progressPct", "/base/currentCompletionProgressPct"})
    expectRefusedByName(progressByHand(someWeek(), 1), place, noShares);
  for (const char* const place :
       {"/type", "/base", "/base/period", "/base/period/date", "/base/period/period", "/base/period/period/periodType",
        "/base/period/period/startDate", "/base/period/period/finishDate", "/base/period/period/firstDayOfWeek"})
    expectRefusedByName(progressByHand(someWeek(), 1), place, {});
  const CompletionStatus open{everyStatus[0], progressByHand(someWeek(), 1)};
  for (const char* const place : {"/status", "/status/positiveIncomplete/_0", "/codableProgress"})
    expectRefusedByName(open, place, {});
  for (const char* const place : {"/type", "/from", "/to", "/date"})
    expectRefusedByName(TaskLogEntryPeriod(someWeek()), place, {});
}

}  // namespace
}  // namespace habitra
