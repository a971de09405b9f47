#include <gtest/gtest.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskRecentHistory.h>

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {
namespace {

using T = TaskLogEntryType;

// In the order of declaration, with the values that stores have held from the beginning.
TEST(Enumerations, EntryTypesKeepTheirStoredValuesAndOrder) {
  std::string found;
  for (const auto& row : RawValueTable<T>::rows) {
    found += std::string(row.name) + " " + std::to_string(row.raw) + " ";
    EXPECT_EQ(fromRawValue<T>(row.raw), row.value);
    EXPECT_EQ(fromCaseName<T>(row.name), row.value);
  }
  EXPECT_EQ(found,
            "unknown 0 completedManuallyFull 1 completedAutomaticallyFull 2 completedManuallyPartial 6 "
            "skippedManuallyFull 3 skippedAutomaticallyFull 4 allowableMissManuallyFull 13 "
            "allowableMissAutomaticallyFull 14 missedAutomaticallyFull 5 missedManuallyFull 7 missedManuallyPartial 8 "
            "missedAutomaticallyPartial 9 completedAutomaticallyPartial 10 timerManual 11 timerAutomatic 12 "
            "externalHealthData 15 ");
  for (const int raw : {-1, 16, 65'536 + 1}) EXPECT_EQ(fromRawValue<T>(raw), std::nullopt) << raw;
}

TEST(Enumerations, EntryTypesAreClassifiedByTheWordsOfTheirNames) {
  for (const auto& [type, raw, name] : RawValueTable<T>::rows) {
    SCOPED_TRACE(name);
    const auto has = [&name = name](std::string_view word) { return name.find(word) != std::string_view::npos; };
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
  using Type = TaskFrequencyPeriodType;
  std::string columns;
  for (const auto& row : RawValueTable<TaskFrequency::DayMode>::rows) {
    const TaskFrequency frequency{.dayMode = row.value};
    columns += std::string(rawValue(frequency.measurementDuration())) +
               std::string(rawValue(frequency.periodTypeForCompletionCountCalculation())) + " ";
  }
  EXPECT_EQ(columns, "dd dw dd dm dy df ww mm ff yy dm ");
  EXPECT_EQ(fromRawValue<TaskFrequency::DayMode>(11), std::nullopt);
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
    for (const auto& existing : RawValueTable<T>::rows) found += supersedes(type, existing.value) ? 'x' : '.';
    EXPECT_EQ(found, row) << caseName(type);
  }
}

}  // namespace
}  // namespace habitra
