#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Tasks/TaskNotifications.h>
#include <Support/SettableClock.h>

#include <gtest/gtest.h>

#include <set>

#include <rapidcheck/gtest.h>  // after gtest itself

#include "HabitraCore/NotificationGenerators.h"

namespace habitra {
namespace {

using ReminderRow = TaskNotificationRemindersEntity;

std::shared_ptr<Store> newStore() { return Store::inMemory(std::make_shared<SettableClock>(qz::Moment())); }

RC_GTEST_PROP(TaskNotificationsTest, SettingsComeBackWithTheirRemindersInOrder, ()) {
  StoreContext context(newStore());
  TaskEntity& task = context.insert(TaskEntity{});
  TaskNotificationSettings settings;
  for (int round = 0; round < 4; ++round) {
    // Some of the reminders there were, in another order and perhaps twice, with others between.
    const std::vector<TaskReminder> earlier = settings.reminders;
    settings = anyNotificationSettings();
    for (const TaskReminder& reminder : earlier)
      settings.reminders.insert(
          settings.reminders.begin() + qz::between(0, static_cast<std::int64_t>(settings.reminders.size())), reminder);
    setNotificationSettings(context, task, settings);
    context.save({});
    const auto kept = notificationSettingsOf(context, task).value();
    // Of those with the same identifier the first has kept it.
    std::set<qz::UniqueID> identifiers;
    for (std::size_t i = 0; i < settings.reminders.size() && i < kept.reminders.size(); ++i) {
      const bool isFirst = identifiers.insert(settings.reminders[i].uniqueId).second;
      RC_ASSERT(isFirst == (kept.reminders[i].uniqueId == settings.reminders[i].uniqueId));
      settings.reminders[i].uniqueId = kept.reminders[i].uniqueId;
    }
    RC_ASSERT(kept == settings);
    RC_ASSERT(context.repeatedTexts<ReminderRow>("uniqueId").empty());
  }
}

TEST(TaskNotificationsTest, ReminderRowsStayWhereTheyCan) {
  const auto clock = std::make_shared<SettableClock>(qz::Moment());
  StoreContext context(Store::inMemory(clock));
  TaskEntity& task = context.insert(TaskEntity{});
  EXPECT_EQ(notificationSettingsOf(context, task), std::nullopt);
  const auto id = [](std::uint8_t n) { return qz::UniqueID(qz::UniqueID::Bytes{n}); };
  TaskNotificationSettings settings;
  settings.reminders = {{.uniqueId = id(1)}, {.uniqueId = id(2)}, {.uniqueId = id(3)}};
  setNotificationSettings(context, task, settings);
  const auto rows = [&] { return context.fetchRelated<ReminderRow>("task", task.objectID); };
  const std::vector<ReminderRow*> before = rows();
  before.at(0)->icon = "ic_first";
  const ObjectID later = context.insert(ReminderRow{.reminderType = "moonrise", .task = task.objectID}).objectID;
  context.save({});

  clock->advance(std::chrono::hours(1));
  setNotificationSettings(context, task, settings);
  EXPECT_FALSE(context.hasChanges()) << "what is as it was is not written";
  const auto lastUpdated = [&] {
    return context.fetchAll<TaskNotificationSettingsEntity>().at(0)->lastUpdated.value();
  };
  EXPECT_EQ(lastUpdated(), qz::Moment());
  settings.reminders[1].sound = SoundEffect::bell;
  std::swap(settings.reminders[0], settings.reminders[2]);
  setNotificationSettings(context, task, settings);
  context.save({});
  EXPECT_EQ(notificationSettingsOf(context, task), settings);
  EXPECT_EQ(lastUpdated(), clock->now()) << "a reminder has changed";
  EXPECT_EQ(rows().front()->objectID, before.at(2)->objectID) << "the first one has kept its row";
  EXPECT_EQ(rows().back()->icon, "ic_first") << "what a reminder does not have has moved with it";
  EXPECT_NE(context.find<ReminderRow>(later), nullptr) << "a later version's is left alone";
}

}  // namespace
}  // namespace habitra
