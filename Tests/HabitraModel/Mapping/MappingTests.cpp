#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/NotificationSettingsMapping.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/ReminderMapping.h>
#include <HabitraModel/Mapping/ShareParticipant.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Mapping/TaskCloudSummaryCoreDataContainer.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>  // after gtest itself

#include "HabitraCore/AutomaticTypeGenerators.h"
#include "RowGenerators.h"

// A value that is written over any row is read back the same; any row can be read, and what was read of it be written
// over it and read again.
namespace habitra {
namespace {

Bytes bytes(std::string_view text) { return {text.begin(), text.end()}; }

std::string anyWords() { return *rc::gen::element<std::string>("", "Café \"Zur Post\"\n", "ic_tree"); }

TaskCloudSummary anySummary() {
  return {.uniqueId = anyID(),
          .title = anyOrNone(anyWords),
          .imageName = anyOrNone(anyWords),
          .colorInfo = anyOrNone(anyWords),
          .isNegative = anyBool(),
          .frequency = anyOrNone(anyFrequency),
          .activeStreak = *rc::gen::arbitrary<std::int64_t>(),
          .bestStreak = *rc::gen::arbitrary<std::int64_t>(),
          .todayStatus = anyOrNone(anyWords),
          .updated = qz::Moment(std::chrono::microseconds(*rc::gen::arbitrary<std::int64_t>()))};
}

std::vector<ShareParticipant> anyParticipants() {
  std::vector<ShareParticipant> participants;
  for (std::int64_t i = qz::between(0, 3); i > 0; --i)
    participants.push_back({.identifier = anyWords(),
                            .name = anyOrNone(anyWords),
                            .role = anyOrNone(anyCase<ShareParticipant::Role>),
                            .acceptance = anyOrNone(anyCase<ShareParticipant::Acceptance>)});
  return participants;
}

RC_GTEST_PROP(MappingTest, TasksGiveBackWhatWasWritten, ()) {
  TaskEntity row = anyRow<TaskEntity>();
  (void)rulesWithoutPauses(row);
  if (const auto asRead = frequencyOf(row)) {
    setFrequency(row, *asRead);
    RC_ASSERT(frequencyOf(row) == asRead);
  }
  const TaskEntity before = row;
  setAutomaticType(row, automaticTypeOf(row));
  RC_ASSERT(row == before);

  const TaskFrequency frequency = anyFrequency();
  const auto type = anyOrNone(anyAutomaticType);
  setFrequency(row, frequency);
  setAutomaticType(row, type);
  RC_ASSERT(frequencyOf(row) == frequency);
  RC_ASSERT(automaticTypeOf(row) == type);
}

RC_GTEST_PROP(MappingTest, EntriesAndPeriodsGiveBackWhatWasWritten, ()) {
  auto row = anyRow<TaskLogEntryEntity>();
  auto timer = anyRow<TaskTimerEntity>();
  const LoggedEntry before = loggedEntry(row);
  RC_ASSERT(before.entryDate == row.entryDate);
  if (const auto asRead = periodOf(timer, qz::DayOfWeek::monday)) {
    setPeriod(timer, *asRead);
    RC_ASSERT(periodOf(timer, qz::DayOfWeek::monday) == asRead);
  }

  const DatedPeriod period = anyPeriod();
  const auto type = anyCase<TaskLogEntryType>();
  setEntry(row, type, period, 0.25, 1e-300);
  setPeriod(timer, period.period);
  RC_ASSERT(periodOf(row, period.period.firstDayOfWeek) == period.period);
  RC_ASSERT(periodOf(timer, period.period.firstDayOfWeek) == period.period);
  const LoggedEntry entry = loggedEntry(row);
  RC_ASSERT(entry.entryType == type);
  RC_ASSERT(existingDayFromStored(entry.entryDate) == period.date);
  RC_ASSERT(existingDayFromStored(entry.periodFrom) == period.period.startDate);
  RC_ASSERT(existingDayFromStored(entry.periodTo) == period.period.finishDate);
  RC_ASSERT(entry.periodType == period.period.periodType);
  RC_ASSERT(entry.progress == 0.25);
  RC_ASSERT(entry.progressTotal == 1e-300);
}

RC_GTEST_PROP(MappingTest, NotificationSettingsGiveBackWhatWasWritten, ()) {
  auto row = anyRow<TaskNotificationSettingsEntity>();
  const auto before = row;
  const TaskNotificationSettings asRead = notificationSettingsOf(row);
  setNotificationSettings(row, asRead);
  RC_ASSERT(notificationSettingsOf(row) == asRead);

  TaskNotificationSettings settings = anyNotificationSettings();
  settings.reminders.clear();
  setNotificationSettings(row, settings);
  RC_ASSERT(notificationSettingsOf(row) == settings);
  RC_ASSERT(row.difficultyNotificationStatus == before.difficultyNotificationStatus);
  RC_ASSERT(row.snoozeDuration == before.snoozeDuration);
  RC_ASSERT(row.lastUpdated == before.lastUpdated);
  RC_ASSERT(row.task == before.task);
}

RC_GTEST_PROP(MappingTest, RemindersGiveBackWhatWasWritten, ()) {
  auto row = anyRow<TaskNotificationRemindersEntity>();
  const auto before = row;
  if (const auto asRead = reminderOf(row)) {
    setReminder(row, *asRead);
    RC_ASSERT(reminderOf(row) == asRead);
  }
  const TaskReminder reminder = anyReminder();
  setReminder(row, reminder);
  RC_ASSERT(reminderOf(row) == reminder);
  RC_ASSERT(row.icon == before.icon);
  RC_ASSERT(row.task == before.task);
}

RC_GTEST_PROP(MappingTest, SharesGiveBackWhatWasWritten, ()) {
  auto row = anyRow<TaskShareEntity>();
  const TaskShareEntity before = row;
  setParticipants(row, participantsOf(row));
  RC_ASSERT(row == before);

  const TaskCloudSummary summary = anySummary();
  const std::vector<ShareParticipant> participants = anyParticipants();
  RC_ASSERT(setSummary(row, summary));
  setParticipants(row, participants);
  RC_ASSERT(summaryOf(row) == summary);
  RC_ASSERT(participantsOf(row) == participants);
  TaskCloudSummary later = summary;
  later.updated += std::chrono::hours(qz::between(0, 1));
  RC_ASSERT(!setSummary(row, later));
  later.isNegative = !later.isNegative;
  RC_ASSERT(setSummary(row, later));
}

TEST(MappingTest, DaysFitTheirWidth) {
  EXPECT_EQ(dayFromStored(0), std::nullopt);
  EXPECT_EQ(dayFromStored(-20240101), std::nullopt);
  EXPECT_EQ(existingDayFromStored(20240230), std::nullopt);
  EXPECT_EQ(storedDay(std::nullopt), 0);
  EXPECT_DEATH((void)storedDay(qz::YYYYMMDD(300'000, 1, 1)), "does not fit its width");
  TaskEntity task;
  EXPECT_DEATH(setFrequency(task, {.numPartialCompletions = 40'000}), "does not fit its width");
}

TEST(MappingTest, WhatIsUnknownReadsAsNoneAndStaysUntilSomethingElseIsChosen) {
  TaskNotificationSettingsEntity settings{
      .badgeFrom = 86'400, .badgeMode = "dim", .soundReminder = "foghorn", .soundTimerNotification = "gong"};
  TaskNotificationSettings read = notificationSettingsOf(settings);
  EXPECT_EQ(read.badgeMode, BadgeMode::includeWhenIncomplete);
  EXPECT_EQ(read.badgeFrom, std::nullopt);
  EXPECT_EQ(read.reminderSound, std::nullopt);
  read.timerNotificationSound = std::nullopt;
  setNotificationSettings(settings, read);
  EXPECT_EQ(settings.badgeMode, "dim");
  EXPECT_EQ(settings.badgeFrom, 86'400);
  EXPECT_EQ(settings.soundReminder, "foghorn");
  EXPECT_EQ(settings.soundTimerNotification, std::nullopt);
  read.badgeMode = BadgeMode::doNotInclude;
  read.badgeFrom = qz::HHMMSS(7, 0);
  read.reminderSound = SoundEffect::bell;
  setNotificationSettings(settings, read);
  EXPECT_EQ(settings.badgeMode, "none");
  EXPECT_EQ(settings.badgeFrom, 25'200);
  EXPECT_EQ(settings.soundReminder, "bell");

  TaskNotificationRemindersEntity reminder{.daysFromFinish = "",
                                           .daysFromStart = "10,-3,2",
                                           .daysOfWeek = 200,
                                           .region = bytes(R"({"latitude":"north"})"),
                                           .reminderType = "todm",
                                           .snoozeDate = 20240230,
                                           .snoozeTime = -1,
                                           .uniqueId = "018d0000-0000-7000-8000-00000000000a"};
  TaskReminder value = reminderOf(reminder).value();
  EXPECT_EQ(value.trigger.type, TaskReminder::TriggerType::timeOfDayMuted);
  EXPECT_EQ(value.daysOfWeek, qz::DayOfWeek::every());
  EXPECT_EQ(value.dayIndexesFromStart, (std::set<std::int64_t>{-3, 2, 10}));
  EXPECT_EQ(value.dayIndexesFromFinish, std::set<std::int64_t>{});
  EXPECT_EQ(value.trigger.region, std::nullopt);
  value.dayIndexesFromFinish = {{10, 9}};
  value.trigger.duration = 0.1;
  setReminder(reminder, value);
  EXPECT_EQ(reminder.daysFromFinish, "9,10");
  EXPECT_EQ(reminder.daysOfWeek, 200);
  EXPECT_EQ(reminder.region, bytes(R"({"latitude":"north"})"));
  EXPECT_EQ(reminder.duration, 0.1);
  EXPECT_EQ(reminder.snoozeDate, 20240230);
  EXPECT_EQ(reminder.snoozeTime, -1);

  TaskEntity task{.typeName = "levitation", .typeTarget = 3, .typeUnit = "m"};
  const TaskEntity unknown = task;
  setAutomaticType(task, std::nullopt);
  EXPECT_EQ(task, unknown);
  reminder.reminderType = "moonrise";
  EXPECT_EQ(reminderOf(reminder), std::nullopt);
}

TEST(MappingTest, TheFormsOfSharesAreThoseOfStoresThatExist) {
  TaskShareEntity share{.summaryJson = bytes(R"({"version":2,"summary":{}})")};
  EXPECT_EQ(summaryOf(share), std::nullopt) << "of a later version";
  TaskCloudSummary summary{.uniqueId = qz::UniqueID::fromText("018D0000-0000-7000-8000-00000000000A").value(),
                           .title = "Walk",
                           .frequency = TaskFrequency::everyDay(),
                           .activeStreak = 3,
                           .bestStreak = 12};
  setSummary(share, summary);
  EXPECT_EQ(share.summaryJsonHashValue, -3472663925341363303);
  share.participantsJson =
      bytes(R"([{"identifier":"a","role":"king","acceptance":"accepted","since":7},{"name":"b"},{"identifier":"c"}])");
  std::vector<ShareParticipant> participants = participantsOf(share);
  EXPECT_EQ(participants,
            (std::vector<ShareParticipant>{{.identifier = "a", .acceptance = ShareParticipant::Acceptance::accepted},
                                           {.identifier = "c"}}));
  participants.pop_back();
  participants[0].name = "Ann";
  setParticipants(share, participants);
  EXPECT_EQ(share.participantsJson,
            bytes(R"([{"acceptance":"accepted","identifier":"a","name":"Ann","role":"king","since":7},{"name":"b"}])"))
      << "what is not known stays";
}

}  // namespace
}  // namespace habitra
