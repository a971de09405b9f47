#include <gtest/gtest.h>
#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskMeasure.h>
#include <HabitraCore/TaskRecentHistory.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {
namespace {

using T = TaskLogEntryType;

// The order of declaration, beside the values that stores have held from the beginning.
constexpr std::array<std::pair<T, std::int16_t>, 16> storedTypes{{
    {T::unknown, 0},
    {T::completedManuallyFull, 1},
    {T::completedAutomaticallyFull, 2},
    {T::completedManuallyPartial, 6},
    {T::skippedManuallyFull, 3},
    {T::skippedAutomaticallyFull, 4},
    {T::allowableMissManuallyFull, 13},
    {T::allowableMissAutomaticallyFull, 14},
    {T::missedAutomaticallyFull, 5},
    {T::missedManuallyFull, 7},
    {T::missedManuallyPartial, 8},
    {T::missedAutomaticallyPartial, 9},
    {T::completedAutomaticallyPartial, 10},
    {T::timerManual, 11},
    {T::timerAutomatic, 12},
    {T::externalHealthData, 15},
}};

TEST(Enumerations, EntryTypesKeepTheirStoredValuesAndOrder) {
  ASSERT_EQ(RawValueTable<T>::rows.size(), storedTypes.size());
  for (std::size_t i = 0; i < storedTypes.size(); ++i) {
    const auto& [type, raw] = storedTypes[i];
    EXPECT_EQ(RawValueTable<T>::rows[i].value, type) << i;
    EXPECT_EQ(rawValue(type), raw);
    EXPECT_EQ(fromRawValue<T>(raw), type);
    EXPECT_EQ(fromCaseName<T>(caseName(type)), type);
  }
  for (const int raw : {-1, 16, 65'536 + 1}) EXPECT_EQ(fromRawValue<T>(raw), std::nullopt) << raw;
}

TEST(Enumerations, EntryTypesAreClassifiedByTheWordsOfTheirNames) {
  for (const auto& [type, raw] : storedTypes) {
    const std::string_view name = caseName(type);
    SCOPED_TRACE(name);
    const auto has = [&](std::string_view word) { return name.find(word) != std::string_view::npos; };
    EXPECT_EQ(isFull(type), has("Full"));
    EXPECT_EQ(isPartial(type), has("Partial"));
    EXPECT_EQ(isAutomatic(type), has("Automatic"));
    EXPECT_EQ(allManualTypes.contains(type), has("Manual"));
    EXPECT_EQ(isTimer(type), has("timer"));
    EXPECT_EQ(isSkipped(type), has("skipped"));
    EXPECT_EQ(isCompletedFullOrPartial(type), has("completed"));
    EXPECT_EQ(isCompletedFull(type), has("completed") && has("Full"));
    EXPECT_EQ(isCompletedPartial(type), has("completed") && has("Partial"));
    EXPECT_EQ(isMissedFullOrPartial(type), has("missed"));
    EXPECT_EQ(isMissedFull(type), has("missed") && has("Full"));
    EXPECT_EQ(isAllowableMissFull(type), has("allowableMiss"));
  }
}

TEST(Enumerations, ModesSkipModesAndPeriodTypesReadOnlyWhatTheyKnow) {
  using Mode = TaskFrequency::DayMode;
  using Type = TaskFrequencyPeriodType;
  constexpr std::array<std::pair<Type, Type>, 11> columns{{
      {Type::day, Type::day},
      {Type::day, Type::week},
      {Type::day, Type::day},
      {Type::day, Type::month},
      {Type::day, Type::year},
      {Type::day, Type::fortnight},
      {Type::week, Type::week},
      {Type::month, Type::month},
      {Type::fortnight, Type::fortnight},
      {Type::year, Type::year},
      {Type::day, Type::month},
  }};
  for (int raw = 0; raw < 11; ++raw) {
    TaskFrequency frequency;
    frequency.dayMode = fromRawValue<Mode>(raw).value();
    const auto& [measured, counted] = columns[static_cast<std::size_t>(raw)];
    EXPECT_EQ(frequency.measurementDuration(), measured) << raw;
    EXPECT_EQ(frequency.periodTypeForCompletionCountCalculation(), counted) << raw;
  }
  EXPECT_EQ(fromRawValue<Mode>(11), std::nullopt);
  EXPECT_EQ(fromRawValue<TaskFrequency::SkipMode>("mwoi"), TaskFrequency::SkipMode::willMissWithoutIndicator);
  EXPECT_EQ(fromRawValue<TaskFrequency::SkipMode>("swi"), TaskFrequency::SkipMode::willSkipWithIndicator);
  EXPECT_EQ(fromRawValue<TaskFrequency::SkipMode>("xyz"), std::nullopt);
  std::string letters;
  for (const auto& row : RawValueTable<Type>::rows) letters += row.raw;
  EXPECT_EQ(letters, "dwfmy");
  EXPECT_EQ(fromRawValue<Type>("D"), std::nullopt);
}

TEST(Enumerations, LengthsOfPeriodsSayTheirDaysAndHaveAPictureEach) {
  std::string lengths;
  std::set<std::string_view> icons;
  for (const auto& row : RawValueTable<MultiDayCount>::rows) {
    lengths += std::string(row.raw) + " ";
    EXPECT_EQ(row.raw, "d" + std::to_string(numDays(row.value)));
    EXPECT_EQ(row.name, "duration" + std::to_string(numDays(row.value)));
    EXPECT_EQ(rawValue(row.value), row.raw);
    EXPECT_TRUE(icon(row.value).starts_with("calendar.")) << row.raw;
    icons.insert(icon(row.value));
  }
  EXPECT_EQ(lengths, "d1 d7 d14 d28 d29 d30 d31 d365 d366 ");
  EXPECT_EQ(icons.size(), RawValueTable<MultiDayCount>::rows.size());
  EXPECT_EQ(fromRawValue<MultiDayCount>("d28"), MultiDayCount::duration28);
  for (const char* const unknown : {"d2", "28", "d", ""}) EXPECT_EQ(fromRawValue<MultiDayCount>(unknown), std::nullopt);
}

TEST(Enumerations, StatusesOfACalendarAndSpansOfSuccessStandInOrder) {
  const auto inOrder = [](const auto& rows) {
    std::string names;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      EXPECT_EQ(static_cast<std::size_t>(rows[i].value), i);
      names += std::string(rows[i].raw) + " ";
    }
    return names;
  };
  EXPECT_EQ(
      inOrder(RawValueTable<TaskCalendarPeriodInfo::TaskCalendarPeriodStatus>::rows),
      "completed missed skipped allowedMiss current currentCompleted currentMissed currentAllowedMiss future past ");
  EXPECT_EQ(inOrder(RawValueTable<TaskRecentHistory::PreviousSuccessType>::rows),
            "last7 last30 pastMonth pastYear allTime ");
}

TEST(EntryChoice, ANewEntryTakesThePlaceOfOthers) {
  // One row per new type; the columns are the existing types in order of declaration, x: its place is taken.
  //                                                    ?CCcSSAAMMmmcttH
  constexpr std::array<std::pair<T, std::string_view>, 16> taken{{
      {T::unknown, /*                                 */ ".xxxxxxxxxxxx..."},
      {T::completedManuallyFull, /*                   */ ".xxxxxxxxxxxx..."},
      {T::completedAutomaticallyFull, /*              */ "..x..x.xx..xx..."},
      {T::completedManuallyPartial, /*                */ "....xxxxxx......"},
      {T::skippedManuallyFull, /*                     */ ".xxxxxxxxxxxx..."},
      {T::skippedAutomaticallyFull, /*                */ "..x..x.xx......."},
      {T::allowableMissManuallyFull, /*               */ ".xxxxxxxxxxxx..."},
      {T::allowableMissAutomaticallyFull, /*          */ "..x..x.xx......."},
      {T::missedAutomaticallyFull, /*                 */ "..x..x.xx......."},
      {T::missedManuallyFull, /*                      */ ".xxxxxxxxxxxx..."},
      {T::missedManuallyPartial, /*                   */ "....xxxxxx......"},
      {T::missedAutomaticallyPartial, /*              */ ".....x.xx......."},
      {T::completedAutomaticallyPartial, /*           */ ".....x.xx......."},
      {T::timerManual, /*                             */ "................"},
      {T::timerAutomatic, /*                          */ "................"},
      {T::externalHealthData, /*                      */ "................"},
  }};
  for (const auto& [type, row] : taken) {
    std::string found;
    for (const auto& [existing, raw] : storedTypes) found += supersedes(type, existing) ? 'x' : '.';
    EXPECT_EQ(found, row) << caseName(type);
  }
}

/// Taps a task of which a day needs `units` until it is where it began, and spells the kinds and streaks on the way.
std::string tapRound(CompletionStatus status, bool isPartial, const CompletionStatus::TapRules& rules) {
  const CompletionStatus start = status;
  std::string round;
  for (int taps = 0; taps < 10; ++taps) {
    const StreakedCompletionStatus next = status.next({.current = 4, .best = 9}, isPartial, rules);
    round +=
        std::string(caseName(next.completionStatus.status.kind())) + " " + std::to_string(next.streak.current) + "; ";
    status = next.completionStatus;
    if (status.status == start.status && status.codableProgress == start.codableProgress) break;
  }
  return round;
}

TEST(EntryChoice, TapsGoRound) {
  using Status = CompletionStatus::Status;
  const CompletionStatus::TapRules due{};
  const CompletionStatus::TapRules allowed{.missIsAllowed = true};
  const auto mode = TaskFrequency::SkipMode::willMissWithoutIndicator;
  const CompletionStatus toDo = CompletionStatus::unchecked(progressRecord({}, {}, 3));
  EXPECT_EQ(tapRound(toDo, false, due), "positiveComplete 5; positiveSkip 4; positiveIncomplete 4; ");
  EXPECT_EQ(tapRound(toDo, true, due),
            "positiveIncomplete 4; positiveIncomplete 4; positiveComplete 5; positiveSkip 4; positiveIncomplete 4; ");
  const CompletionStatus missed{Status::positiveMiss(), progressRecord({}, {}, 1)};
  EXPECT_EQ(missed.next({.current = 4, .best = 9}, false).completionStatus.status, Status::positiveComplete());
  const CompletionStatus clean{Status::negativeComplete(mode), progressRecord({}, {}, 2)};
  EXPECT_EQ(tapRound(clean, false, due), "negativeMiss 0; negativeComplete 4; ");
  EXPECT_EQ(tapRound(clean, false, allowed), "negativeAllowedMiss 4; negativeComplete 4; ");
  EXPECT_EQ(tapRound(clean, true, due), "negativeComplete 4; negativeMiss 0; negativeComplete 4; ");
}

}  // namespace
}  // namespace habitra
