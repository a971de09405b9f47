#include <gtest/gtest.h>
#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/TaskMeasure.h>
#include <HabitraCore/TaskProgress.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/ISO8601.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CodingComplaints.h"

namespace habitra {
namespace {

using Kind = TaskMeasure::Kind;
using Timer = TaskProgressTimer;

DatedPeriod someWeek() {
  return DatedPeriod(qz::YYYYMMDD(2024, 12, 31), TaskFrequencyPeriodType::week, qz::DayOfWeek::monday);
}

DatedPeriod dayPeriod(std::int64_t y, std::int64_t m, std::int64_t d) {
  return DatedPeriod(qz::YYYYMMDD(y, m, d), TaskFrequencyPeriodType::day, qz::DayOfWeek::monday);
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Amounts as logs hold them, and now and then what only a broken one could.
rc::Gen<double> amounts() {
  return rc::gen::oneOf(rc::gen::map(rc::gen::inRange(0, 400), [](int tenths) { return tenths / 10.0; }),
                        rc::gen::arbitrary<double>(), rc::gen::elementOf(std::vector<double>{0.0, -1.0, 1e308}));
}

rc::Gen<std::int64_t> counts() { return rc::gen::inRange<std::int64_t>(-1, 9); }

TaskProgress someRecordOfKind(std::size_t kind) {
  const DatedPeriod period = someWeek();
  switch (kind) {
    case 0: return TaskProgressSimple{period, *amounts(), *amounts()};
    case 1: return TaskProgressDiscrete{period, *counts(), *counts()};
    case 2: return TaskProgressContinuous{period, *counts(), *amounts(), *amounts()};
    case 3:
      return Timer{period,     *rc::gen::elementOf(std::vector{Timer::Unit::hours, Timer::Unit::minutes}),
                   *counts(),  *counts(),
                   *amounts(), *amounts()};
    case 4: break;
    default: return TaskProgressActivityRings{period, *amounts(), *amounts(), *amounts()};
  }
  TaskProgressDateRange range{.scale = *amounts(), .period = period};
  range.startOfDay = *qz::HHMMSS::fromRawValue(*rc::gen::inRange<std::int64_t>(0, qz::HHMMSS::secondsPerDay));
  range.timeZone = *qz::TimeZone::fromIdentifier(*rc::gen::elementOf(std::vector{"UTC", "Europe/Berlin"}));
  if (*rc::gen::arbitrary<bool>()) {
    constexpr std::int64_t newYear = 1'735'689'600'000'000;
    constexpr std::int64_t tenDays = 864'000'000'000;
    range.currentDate = qz::Moment(std::chrono::microseconds(*rc::gen::inRange(newYear - tenDays, newYear + tenDays)));
  }
  return range;
}

TaskProgressCodable someRecord() {
  return {someRecordOfKind(*rc::gen::inRange<std::size_t>(0, std::variant_size_v<TaskProgress>))};
}

CompletionStatus::Status someStatus() {
  using Status = CompletionStatus::Status;
  const auto mode = *rc::gen::element(TaskFrequency::SkipMode::willMissWithIndicator,
                                      TaskFrequency::SkipMode::willSkipWithoutIndicator);
  return *rc::gen::element(Status::positiveIncomplete(mode), Status::negativeComplete(mode), Status::positiveComplete(),
                           Status::positiveMiss(), Status::positiveSkip(), Status::negativeMiss(),
                           Status::negativeAllowedMiss());
}

TaskLogEntryType someType() {
  return *rc::gen::map(rc::gen::inRange<std::size_t>(0, 16),
                       [](std::size_t i) { return RawValueTable<TaskLogEntryType>::rows[i].value; });
}

TEST(ProgressShares, OfEveryRecord) {
  const auto share = [](const TaskProgress& record) { return TaskProgressCodable{record}.progressShare(); };
  EXPECT_EQ(share(TaskProgressSimple{.progressPct = 0.75}), 0.75);
  EXPECT_EQ(share(TaskProgressDiscrete{.expectedCompletions = 4, .numCompletions = 6}), 1.5);
  EXPECT_EQ(share(TaskProgressContinuous{.targetValue = 8000, .currentValue = 6000}), 0.75);
  // Two of three completions of 20 minutes, and 5 minutes of the third.
  EXPECT_EQ(share(Timer{.expectedCompletions = 3,
                        .numCompletions = 2,
                        .totalTargetDuration = 3600,
                        .currentCompletionDuration = 300}),
            0.75);
  EXPECT_EQ(share(TaskProgressActivityRings{.energy = 2.5, .exercise = 0.5, .stand = 0.75}), 0.75);
  EXPECT_EQ(share(TaskProgressActivityRings{.energy = 0.99, .exercise = 0.99, .stand = 0.99}), 0.99);
  for (const double target : {0.0, -1.0, notANumber}) {
    EXPECT_EQ(share(TaskProgressContinuous{.targetValue = target, .currentValue = 5}), 0.0);
    EXPECT_EQ(share(Timer{.numCompletions = 1, .totalTargetDuration = target, .currentCompletionDuration = 9}), 0.0);
  }
  EXPECT_EQ(share(TaskProgressDiscrete{.expectedCompletions = 0, .numCompletions = 5}), 0.0);
}

/// A target that is hit exactly is reached, though its parts do not come out even in binary.
RC_GTEST_PROP(ProgressShares, EqualPartsComeToTheTarget, ()) {
  const std::int64_t expected = *rc::gen::inRange<std::int64_t>(1, 200);
  const double target = *rc::gen::inRange(1, 100'000) / 100.0;
  TaskProgressContinuous amount{.expectedCompletions = expected, .targetValue = target};
  for (std::int64_t i = 1; i < expected; ++i) amount.addUnit();
  RC_ASSERT(amount.progressShare() < 1.0);
  amount.addUnit();
  RC_ASSERT(amount.currentValue == target);
  // The last completion is timed and not yet entered.
  const Timer timer{.expectedCompletions = expected,
                    .numCompletions = expected - 1,
                    .totalTargetDuration = target,
                    .currentCompletionDuration = amountOfUnits(1, target, expected)};
  RC_ASSERT(timer.progressShare() >= 1.0);
  // What another source measured is no multiple, and is not made one.
  TaskProgressContinuous measured{.expectedCompletions = expected, .targetValue = target, .currentValue = target / 7};
  const double sum = target / 7 + target / static_cast<double>(expected);
  measured.addUnit();
  RC_ASSERT(std::abs(measured.currentValue - sum) <= 1e-12 * sum);
}

RC_GTEST_PROP(ProgressOperations, KeepTheirPromisesWhateverTheRecordHolds, ()) {
  const TaskProgressCodable before = someRecord();
  const double share = before.progressShare();
  RC_ASSERT(std::isfinite(share));
  TaskProgressCodable more = before;
  more.addUnit();
  TaskProgressCodable full = before;
  full.fill();
  TaskProgressCodable none = before;
  none.empty();
  for (const auto* const after : {&more, &full, &none}) {
    RC_ASSERT(std::isfinite(after->progressShare()));
    RC_ASSERT(after->type() == before.type());
    RC_ASSERT(after->period() == before.period());
  }
  if (before.type() == TaskProgressType::dateRange) {
    RC_ASSERT(more == before && full == before && none == before);
    RC_ASSERT(!before.isReached());
    return;
  }
  RC_ASSERT(none.progressShare() == 0.0);
  RC_ASSERT(full.progressShare() >= share);
  if (const auto* const timer = std::get_if<Timer>(&full.base)) {
    RC_ASSERT(full.isReached() == (timer->totalTargetDuration > 0.0));
  }
  // Whoever has reached the target does not fall back below it.
  if (before.isReached()) RC_ASSERT(more.isReached() && full.isReached());
  TaskProgressCodable twice = full;
  twice.fill();
  RC_ASSERT(twice == full);
}

TEST(ProgressOperations, FillTimersAndRings) {
  Timer timer{.expectedCompletions = 3, .totalTargetDuration = 3600, .currentCompletionDuration = 900};
  timer.addUnit();
  EXPECT_EQ(timer.numCompletions, 1);
  EXPECT_EQ(timer.currentCompletionDuration, 0);
  timer.addDuration(600);
  timer.fill();
  EXPECT_EQ(timer.numCompletions, 3);
  EXPECT_EQ(timer.currentCompletionDuration, 0);
  Timer timedInOneGo{.expectedCompletions = 3, .totalTargetDuration = 3600, .currentCompletionDuration = 4000};
  timedInOneGo.fill();
  EXPECT_EQ(timedInOneGo.currentCompletionDuration, 4000) << "full already";
  timedInOneGo.addUnit();
  EXPECT_EQ(timedInOneGo.numCompletions, 3);

  TaskProgressActivityRings rings{.energy = 1.5, .exercise = 0.5};
  rings.addUnit();
  EXPECT_EQ(rings, (TaskProgressActivityRings{.energy = 1.5, .exercise = 1, .stand = 1}));
}

double elapsedShare(const TaskProgressDateRange& record, std::string_view moment) {
  TaskProgressDateRange at = record;
  at.currentDate = qz::momentFromISO8601(moment).value();
  return at.progressShare();
}

TEST(DateRange, CountsTheTimeThatThePeriodHasOnTheClockOfItsZone) {
  TaskProgressDateRange range{.period = dayPeriod(2024, 5, 4)};
  EXPECT_EQ(range.progressShare(), 0.0) << "no current date";
  EXPECT_EQ(elapsedShare(range, "2024-05-03T23:00:00Z"), 0.0);
  EXPECT_EQ(elapsedShare(range, "2024-05-04T06:00:00Z"), 0.25);
  EXPECT_EQ(elapsedShare(range, "2024-05-05T00:00:00Z"), 1.0);
  EXPECT_EQ(elapsedShare(range, "2100-01-01T00:00:00Z"), 1.0);
  range.scale = 2;
  EXPECT_EQ(elapsedShare(range, "2024-05-04T06:00:00Z"), 0.5);
  EXPECT_EQ(elapsedShare(range, "2024-05-04T18:00:00Z"), 1.0);
  range.scale = -1;
  EXPECT_EQ(elapsedShare(range, "2024-05-04T18:00:00Z"), 0.0);
  range.scale = 1;
  range.startOfDay = qz::HHMMSS(3, 0);
  EXPECT_EQ(elapsedShare(range, "2024-05-04T09:00:00Z"), 0.25);
  range.startOfDay = qz::HHMMSS(20, 0);  // the day begins the evening before
  EXPECT_EQ(elapsedShare(range, "2024-05-04T02:00:00Z"), 0.25);
  // The clocks of Berlin go forward: this day has 23 hours, and noon of its clock is the eleventh.
  range = {.timeZone = *qz::TimeZone::fromIdentifier("Europe/Berlin"), .period = dayPeriod(2024, 3, 31)};
  EXPECT_EQ(elapsedShare(range, "2024-03-31T12:00:00+02:00"), 11.0 / 23.0);
  range.period = someWeek();
  EXPECT_EQ(elapsedShare(range, "2025-01-02T12:00:00+01:00"), 0.5);
  std::swap(range.period.period.startDate, range.period.period.finishDate);
  EXPECT_EQ(elapsedShare(range, "2025-01-02T12:00:00+01:00"), 0.0) << "no period at all";
}

TEST(DisplayedPercentage, IsRoundedDownAndExact) {
  const std::vector<std::pair<double, std::int64_t>> expected{{0.0, 0},        {-0.5, 0},
                                                              {notANumber, 0}, {0.0099, 0},
                                                              {0.999999, 99},  {std::nextafter(1.0, 0.0), 99},
                                                              {1.0, 100},      {1.5, 150},
                                                              {2.0 / 3.0, 66}, {std::nextafter(0.5, 0.0), 49}};
  for (const auto& [share, percentage] : expected) EXPECT_EQ(displayedPercentage(share), percentage) << share;
  // 29 of 100 is not 28, though 0.29 × 100 is less than 29.
  for (std::int64_t i = 0; i <= 300; ++i) {
    const TaskProgressDiscrete record{.expectedCompletions = 200, .numCompletions = 2 * i};
    EXPECT_EQ(displayedPercentage(record.progressShare()), i);
  }
  for (const double share : {1e300, infinity}) EXPECT_GT(displayedPercentage(share), 1'000'000'000);
}

TEST(ProgressRecord, IsThatOfTheMeasure) {
  const DatedPeriod period = someWeek();
  const auto made = [&](Kind kind, double target, std::int64_t expected, const ProgressMade& progress) {
    return progressRecord({kind, target, Timer::Unit::hours}, period, expected, progress).base;
  };
  EXPECT_EQ(made(Kind::byHand, 0, 1, {.numUnits = 2}), TaskProgress(TaskProgressSimple{period, 2.0, 1.0}));
  EXPECT_EQ(made(Kind::byHand, 0, 3, {.numUnits = 5}), TaskProgress(TaskProgressDiscrete{period, 3, 5}));
  EXPECT_EQ(made(Kind::quantity, 10, 4, {.numUnits = 1}), TaskProgress(TaskProgressContinuous{period, 4, 10, 2.5}));
  EXPECT_EQ(made(Kind::quantity, 0.7, 7, {.numUnits = 7}), TaskProgress(TaskProgressContinuous{period, 7, 0.7, 0.7}));
  EXPECT_EQ(made(Kind::quantity, 10, 4, {.numUnits = 1, .amount = 12}),
            TaskProgress(TaskProgressContinuous{period, 4, 10, 12}));
  EXPECT_EQ(made(Kind::timed, 3600, 3, {.numUnits = 1, .secondsTimed = 90}),
            TaskProgress(Timer{period, Timer::Unit::hours, 3, 1, 3600, 90}));
  EXPECT_EQ(made(Kind::timed, 3600, 3, {.numUnits = 1, .amount = 2500, .secondsTimed = 50}),
            TaskProgress(Timer{period, Timer::Unit::hours, 3, 2, 3600, 150}));
  EXPECT_EQ(made(Kind::timed, 0, 3, {.amount = 50}), TaskProgress(Timer{period, Timer::Unit::hours, 3, 0, 0, 50}));
  EXPECT_EQ(made(Kind::rings, 0, 2, {.numUnits = 1}), TaskProgress(TaskProgressActivityRings{period}));
  EXPECT_EQ(made(Kind::rings, 0, 2, {.numUnits = 2}), TaskProgress(TaskProgressActivityRings{period, 1, 1, 1}));
  EXPECT_EQ(made(Kind::rings, 0, 1, {.amount = 0.5}), TaskProgress(TaskProgressActivityRings{period, 0.5, 0.5, 0.5}));
}

/// A record that is stepped by entries is the one that is built from their number.
RC_GTEST_PROP(ProgressRecord, AgreesWithItsOwnSteps, ()) {
  const TaskMeasure measure{*rc::gen::element(Kind::byHand, Kind::quantity, Kind::timed),
                            *rc::gen::inRange(1, 100'000) / 10.0};
  const std::int64_t expected = *rc::gen::inRange<std::int64_t>(1, 30);
  const std::int64_t units = *rc::gen::inRange<std::int64_t>(0, 40);
  TaskProgressCodable record = progressRecord(measure, someWeek(), expected, {.numUnits = units});
  RC_ASSERT(record.isReached() == (units >= expected));
  record.addUnit();
  RC_ASSERT(record == progressRecord(measure, someWeek(), expected, {.numUnits = units + 1}));
  TaskProgressCodable full = progressRecord(measure, someWeek(), expected);
  full.fill();
  RC_ASSERT(full == progressRecord(measure, someWeek(), expected, {.numUnits = expected}));
}

/// An amount that a device reports is shown as it is, whichever way it is split.
RC_GTEST_PROP(ProgressRecord, HoldsTheAmountReported, ()) {
  const double target = *rc::gen::inRange(1, 100'000) / 10.0;
  const double amount = *rc::gen::oneOf(
      rc::gen::just(target), rc::gen::map(rc::gen::inRange(0, 200'000), [](int value) { return value / 10.0; }));
  const std::int64_t expected = *rc::gen::inRange<std::int64_t>(1, 30);
  for (const Kind kind : {Kind::quantity, Kind::timed}) {
    const auto record = progressRecord({kind, target}, someWeek(), expected, {.amount = amount});
    RC_ASSERT(std::abs(record.progressShare() - amount / target) <= 1e-12 * (1 + amount / target));
    if (amount >= target) RC_ASSERT(record.isReached());
    if (const auto* const timer = std::get_if<Timer>(&record.base)) {
      RC_ASSERT(timer->currentCompletionDuration >= 0.0);
      RC_ASSERT(timer->currentCompletionDuration <= amountOfUnits(1, target, expected) * (1 + 1e-9));
    }
  }
}

TEST(ProgressRecord, NeverHoldsWhatIsNotFinite) {
  for (const Kind kind : {Kind::byHand, Kind::quantity, Kind::timed, Kind::rings}) {
    for (const double target : {10.0, 1e308, infinity, notANumber}) {
      for (const double amount : {1e308, infinity, -infinity, notANumber}) {
        const auto record = progressRecord({kind, target}, someWeek(), 3, {.amount = amount, .secondsTimed = amount});
        // What is not finite would be coded as null, and not be read again.
        EXPECT_EQ(nlohmann::json::parse(nlohmann::json(record).dump()).get<TaskProgressCodable>(), record);
        EXPECT_TRUE(std::isfinite(record.progressShare()));
      }
    }
  }
}

RC_GTEST_PROP(ProgressCoding, RoundTripsThroughText, ()) {
  const TaskProgressCodable record = someRecord();
  RC_ASSERT(nlohmann::json::parse(nlohmann::json(record).dump()).get<TaskProgressCodable>() == record);
  const CompletionStatus status{someStatus(), record};
  RC_ASSERT(nlohmann::json::parse(nlohmann::json(status).dump()).get<CompletionStatus>() == status);
}

RC_GTEST_PROP(ProgressUnderEntries, StatusesStayInTheirFamilyWithEveryRecord, ()) {
  StreakedCompletionStatus state{{someStatus(), someRecord()}, {.current = 3, .best = 5}};
  const bool isNegative = state.completionStatus.isNegative();
  const TaskProgressCodable start = state.completionStatus.codableProgress;
  for (int i = 0; i < 4; ++i) {
    const StreakedCompletionStatus before = state;
    const TaskLogEntryType type = someType();
    state = state.completionStatus.applyEntryType(state.streak, type);
    const bool isNamed = isNegative ? isCompletedFull(type) || isMissedFullOrPartial(type) || isAllowableMissFull(type)
                                    : isCompletedFullOrPartial(type) || isMissedFull(type) || isSkipped(type);
    if (!isNamed) RC_ASSERT(state == before);
    RC_ASSERT(state.completionStatus.isNegative() == isNegative);
    RC_ASSERT(state.streak.best >= state.streak.current);
    const TaskProgressCodable& progress = state.completionStatus.codableProgress;
    RC_ASSERT(progress.type() == start.type());
    RC_ASSERT(std::isfinite(progress.progressShare()));
    if (start.type() == TaskProgressType::dateRange) RC_ASSERT(progress == start);
  }
}

/// Every record with the members that it is coded with.
const std::vector<std::string> codedRecords{
    R"({"type": "simple", "base": {"progressPct": 0.5, "currentCompletionProgressPct": 0.25, "period": {}}})",
    R"({"type": "discrete", "base": {"expectedCompletions": 2, "numCompletions": 7, "period": {}}})",
    R"({"type": "continuous", "base": {"expectedCompletions": 2, "targetValue": 8.5, "currentValue": 9.25,
        "period": {}}})",
    R"({"type": "timer", "base": {"unit": "m", "expectedCompletions": 2, "numCompletions": 1,
        "totalTargetDuration": 1800.0, "currentCompletionDuration": 30.5, "period": {}}})",
    R"({"type": "dateRange", "base": {"startOfDay": {"h": 3, "m": 30, "s": 0}, "timeZone": "Europe/Berlin",
        "scale": 1.5, "currentDate": "2025-01-01T08:15:00.25Z", "period": {}}})",
    R"({"type": "activity", "base": {"energy": 1.25, "exercise": 0.5, "stand": 0.0, "period": {}}})",
};

nlohmann::json coded(const std::string& text) {
  nlohmann::json json = nlohmann::json::parse(text);
  json["base"]["period"] = someWeek();
  return json;
}

TEST(ProgressCoding, UsesTheNamesOfTheFields) {
  for (const std::string& text : codedRecords) {
    const auto record = coded(text).get<TaskProgressCodable>();
    EXPECT_EQ(rawValue(record.type()), coded(text)["type"]);
    EXPECT_EQ(nlohmann::json(record), coded(text));
  }
  const auto timer = std::get<Timer>(coded(codedRecords[3]).get<TaskProgressCodable>().base);
  EXPECT_EQ(timer.unit, Timer::Unit::minutes);
  EXPECT_EQ(timer.currentCompletionDuration, 30.5);
  nlohmann::json undated = coded(codedRecords[4]);
  undated["base"].erase("currentDate");
  const auto range = std::get<TaskProgressDateRange>(undated.get<TaskProgressCodable>().base);
  EXPECT_FALSE(range.currentDate.has_value());
  EXPECT_EQ(nlohmann::json(TaskProgressCodable{range}), undated);
}

TEST(ProgressCoding, RefusesMembersThatAreMissingOrOfTheWrongKindByName) {
  for (const std::string& text : codedRecords) {
    const nlohmann::json json = coded(text);
    for (const auto& [key, value] : json["base"].items()) {
      nlohmann::json wrong = json;
      wrong["base"].erase(key);
      const std::string missing = key == "currentDate" ? "" : "Unable to read \"" + key + "\": missing";
      EXPECT_EQ(complaint<TaskProgressCodable>(wrong), missing);
      if (value.is_object()) continue;  // their own readers complain
      for (const nlohmann::json& bad : {nlohmann::json(true), nlohmann::json("x"), nlohmann::json(infinity)}) {
        wrong["base"][key] = bad;
        const std::string found = complaint<TaskProgressCodable>(wrong);
        EXPECT_TRUE(found.starts_with("Unable to ")) << key << ": " << found;
        if (key != "unit" && !bad.is_number_float()) {
          EXPECT_EQ(found, "Unable to read \"" + key + "\" from " + bad.dump());
        }
      }
    }
  }
  EXPECT_EQ(complaint<TaskProgressCodable>({{"type", "rings"}, {"base", {}}}),
            "Unable to create TaskProgressType from \"rings\"");
  nlohmann::json timer = coded(codedRecords[3]);
  timer["base"]["unit"] = "d";
  EXPECT_EQ(complaint<TaskProgressCodable>(timer), "Unable to create TaskProgressTimer.Unit from \"d\"");
  timer = coded(codedRecords[3]);
  timer["base"]["numCompletions"] = 1.5;
  EXPECT_EQ(complaint<TaskProgressCodable>(timer), "Unable to read \"numCompletions\" from 1.5");
  // A day whose first moment no clock can tell.
  nlohmann::json range = coded(codedRecords[4]);
  range["base"]["period"]["period"]["finishDate"] = 210'000'0101;
  EXPECT_TRUE(complaint<TaskProgressCodable>(range).starts_with("Unable to read \"period\" from "));
}

}  // namespace
}  // namespace habitra
