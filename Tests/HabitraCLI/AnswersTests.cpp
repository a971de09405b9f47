#include <gtest/gtest.h>
#include <HabitraCLI/Answers.h>

#include "SampleHabit.h"

namespace {

using habitra::asText;
using habitra::HabitSummary;
using Status = habitra::CompletionStatus::Status;
constexpr auto willMiss = habitra::TaskFrequency::SkipMode::willMissWithoutIndicator;

HabitSummary withStatus(const std::string& title, Status status, bool due = true) {
  HabitSummary habit = sampleHabit(title, 2, 3);
  habit.isNegative = status.isNegative();
  habit.status = habitra::CompletionStatus{.status = status, .codableProgress = {}};
  habit.due = due;
  return habit;
}

TEST(AnswersTests, todayCountsWhatIsDueAndKeepsHabitsToAvoidApart) {
  const auto today = habitra::TodayList::of(
      {2024, 2, 29},
      {withStatus("Smoke", Status::negativeAllowedMiss()), withStatus("Bite", Status::negativeMiss()),
       withStatus("Sweets", Status::negativeComplete(willMiss)), withStatus("Swim", Status::positiveComplete(), false),
       withStatus("Gym", Status::positiveIncomplete(willMiss), false),
       withStatus("Walk", Status::positiveIncomplete(willMiss)), sampleHabit("Odd", 0, 0),
       withStatus("Read", Status::positiveComplete()), withStatus("Write", Status::positiveMiss())});
  EXPECT_EQ(asText(today, {}),
            "Thu 2024-02-29: 1 of 4 done, 1 of 3 clean\n"
            "\n"
            "[ ] Walk    streak 2  best 3\n"
            "\n"
            "[o] Sweets  streak 2  best 3\n"
            "[x] Swim    streak 2  best 3\n"
            "[x] Read    streak 2  best 3\n"
            "\n"
            "[~] Smoke   streak 2  best 3\n"
            "[!] Bite    streak 2  best 3\n"
            "[ ] Gym     streak 2  best 3\n"
            "[?] Odd     streak 0  best 0\n"
            "[!] Write   streak 2  best 3\n");
}

TEST(AnswersTests, saysWhatHoldsNow) {
  using habitra::Marked;
  HabitSummary weekly = withStatus("Swim", Status::positiveComplete());
  weekly.period = habitra::TaskFrequencyPeriod{.periodType = habitra::TaskFrequencyPeriodType::week};
  EXPECT_EQ(asText(
                habitra::MarkedHabits{
                    {{Marked::Outcome::already, weekly},
                     {Marked::Outcome::recorded, withStatus("Push-ups", Status::positiveIncomplete(willMiss))},
                     {Marked::Outcome::recorded, withStatus("Sweets", Status::negativeComplete(willMiss))}}},
                {}),
            "[x] Swim: was already done this week, streak 2 (best 3)\n"
            "[ ] Push-ups: counted, still open, streak 2 (best 3)\n"
            "[o] Sweets: clean, streak 2 (best 3)\n");
  EXPECT_EQ(asText(habitra::ProcessReport{.tasks = 1, .changed = 1, .filledIn = 1, .removed = 2}, {}),
            "1 habit up to date: 1 changed, 1 day filled in, 2 entries of the future removed\n");
  const habitra::ImportReport report{.tasks = {{.title = "Walk", .uniqueId = {}, .entries = {.left = 1}}}};
  EXPECT_EQ(
      asText(habitra::ImportedHistory{{.report = report, .processed = habitra::ProcessReport{.filledIn = 12}}}, {}),
      "1 habit: 1 already there\n1 entry: 1 already there\n12 days filled in\n");
  EXPECT_EQ(asText(habitra::ImportedHistory{{.report = report, .processed = habitra::ProcessReport{}}}, {}),
            "1 habit: 1 already there\n1 entry: 1 already there\n");
  const habitra::ImportReport more{
      .tasks =
          {{.title = "Walk",
            .uniqueId = {},
            .entries = {.added = 2},
            .notes = {.added = 1},
            .parts = {.added = 3},
            .remarks = {"its goal was left out"}},
           {.title = "Old", .uniqueId = {}, .outcome = habitra::ImportReport::Outcome::leftOut, .remarks = {"a\nb"}},
           {.title = "Read", .uniqueId = {}, .outcome = habitra::ImportReport::Outcome::added}},
      .categories = {.added = 2},
      .settings = {.left = 1},
      .remarks = {"2 journals were left out"}};
  EXPECT_EQ(asText(habitra::ImportedHistory{{.report = more, .processed = habitra::ProcessReport{}}}, {}),
            "3 habits: 1 added, 1 already there, 1 left out\n"
            "2 entries: 2 added\n"
            "1 note: 1 added\n"
            "3 other parts: 3 added\n"
            "2 categories: 2 added\n"
            "1 setting: 1 already there\n"
            "Walk: 2 entries, 1 note, 3 other parts; its goal was left out\n"
            "Old: a\uFFFDb\n"
            "2 journals were left out\n");
  EXPECT_EQ(asText(habitra::ExportedHistory{{.tasks = 2, .rows = 1}, "a.csv"}, {}),
            "a.csv: 1 row of 2 habits written\n");
}

}  // namespace
