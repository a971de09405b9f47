#include <gtest/gtest.h>
#include <HabitraCore/Notifications/DefaultSettingsTaskType.h>
#include <HabitraCore/Notifications/NotificationValidation.h>
#include <HabitraCore/Notifications/TimerReminderTime.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "CodingComplaints.h"
#include "NotificationGenerators.h"

namespace habitra {
namespace {

using nlohmann::json;
using Trigger = TaskReminder::Trigger;
using TriggerType = TaskReminder::TriggerType;

/// The stored texts of an enumeration in order of declaration; each must lead back to its own case.
template <RawValued E>
std::string storedTexts() {
  std::string texts;
  for (std::size_t i = 0; i < RawValueTable<E>::rows.size(); ++i) {
    const auto& row = RawValueTable<E>::rows[i];
    EXPECT_EQ(static_cast<std::size_t>(row.value), i) << row.raw;
    EXPECT_EQ(fromRawValue<E>(row.raw), row.value) << row.raw;
    EXPECT_EQ(fromCaseName<E>(row.name), row.value) << row.raw;
    texts += (i == 0 ? "" : " ") + std::string(row.raw);
  }
  EXPECT_EQ(fromRawValue<E>(std::string_view("x")), std::nullopt) << texts;
  return texts;
}

TEST(NotificationEnumerations, KeepTheirStoredTexts) {
  EXPECT_EQ(storedTexts<BadgeMode>(), "none incomplete");
  EXPECT_EQ(storedTexts<ReminderType>(), "none automatic custom");
  EXPECT_EQ(storedTexts<NotificationTimeZone>(), "owner viewer");
  EXPECT_EQ(storedTexts<LiveActivityDisplayMode>(), "automatic yes no");
  EXPECT_EQ(storedTexts<RegionType>(), "home work school gym");
  EXPECT_EQ(storedTexts<TriggerType>(), "tod todm loc das dbf");
  EXPECT_EQ(storedTexts<TimerReminderType>(), "completed remaining");
  EXPECT_EQ(storedTexts<SoundType>(),
            "taskComplete taskPartiallyComplete taskMissed taskPartiallyMissed reminder timerNotification");
  EXPECT_EQ(storedTexts<SoundEffect>(),
            "silent chime bell soft_bell gong singing_bowl water_drop marimba fanfare knock");
  std::set<std::string_view> titles;
  for (const auto& row : RawValueTable<SoundEffect>::rows) titles.insert(title(row.value));
  EXPECT_EQ(titles.size(), RawValueTable<SoundEffect>::rows.size());
  EXPECT_FALSE(titles.contains(""));
}

/// Of the years 0 to 9999, sometimes the first or the last one.
qz::Moment anyWritableMoment() {
  const qz::Moment last = TimerReminderTime::endOfDates - std::chrono::microseconds(1);
  const std::int64_t between = qz::between(TimerReminderTime::firstDate.time_since_epoch().count(),  //
                                           last.time_since_epoch().count());
  return *rc::gen::weightedElement<qz::Moment>(
      {{1, TimerReminderTime::firstDate}, {1, last}, {8, qz::Moment(std::chrono::microseconds(between))}});
}

RC_GTEST_PROP(NotificationCoding, WhatIsWrittenIsReadBackThroughText, ()) {
  const TaskNotificationSettings settings = anyNotificationSettings();
  RC_ASSERT(json::parse(json(settings).dump()).get<TaskNotificationSettings>() == settings);
  const TimerReminderTime time{
      .type = anyCase<TimerReminderType>(), .duration = anyNumber(), .date = anyWritableMoment()};
  RC_ASSERT(json::parse(json(time).dump()).get<TimerReminderTime>() == time);
}

const qz::UniqueID someID = qz::UniqueID::fromText("0195E8D4-7A00-7000-8000-00000000ABCD").value();

/// Settings in which nothing is absent.
TaskNotificationSettings fullSettings() {
  const TriggerRegion region{.type = RegionType::gym,
                             .title = "Boulder hall",
                             .latitude = 48.25,
                             .longitude = -11.5,
                             .radius = 150,
                             .icon = "ic_dumbbell"};
  const TaskReminder reminder{
      .uniqueId = someID,
      .timeZone = NotificationTimeZone::taskViewer,
      .trigger = {.type = TriggerType::location, .timeOfDay = qz::HHMMSS(22, 30), .region = region, .duration = 300.5},
      .daysOfWeek = {qz::DayOfWeek::wednesday, qz::DayOfWeek::monday},
      .dayIndexesFromStart = std::set<std::int64_t>{10, 0, 3},
      .dayIndexesFromFinish = std::set<std::int64_t>{},
      .snoozeTime = qz::HHMMSS(7, 5),
      .snoozeDate = qz::YYYYMMDD(2024, 2, 29),
      .snoozeTimeZone = NotificationTimeZone::taskOwner,
      .sound = SoundEffect::softBell,
      .timeSensitive = true};
  return {.badgeFrom = qz::HHMMSS(22, 30),
          .badgeTo = qz::HHMMSS(6, 0),
          .badgeTimeZone = NotificationTimeZone::taskOwner,
          .reminderType = ReminderType::custom,
          .completedNotification = true,
          .partiallyCompletedNotification = false,
          .completedOrMissedSound = SoundEffect::fanfare,
          .partiallyCompletedOrMissedSound = SoundEffect::silent,
          .reminderSound = SoundEffect::bell,
          .timerNotificationSound = SoundEffect::gong,
          .automaticRemindersAreTimeSensitive = false,
          .completedNotificationIsTimeSensitive = true,
          .partiallyCompletedNotificationIsTimeSensitive = false,
          .timerNotificationsAreTimeSensitive = true,
          .liveActivityDisplayMode = LiveActivityDisplayMode::yes,
          .reminders = {reminder}};
}

// The letter of the coded form: other devices and older backups read it.
TEST(NotificationCoding, WritesEveryFieldUnderItsName) {
  EXPECT_EQ(json(fullSettings()), json::parse(R"({
    "badgeMode": "incomplete", "badgeFrom": {"h": 22, "m": 30, "s": 0}, "badgeTo": {"h": 6, "m": 0, "s": 0},
    "badgeTimeZone": "owner", "reminderType": "custom", "maxReminders": 3, "completedNotification": true,
    "partiallyCompletedNotification": false, "completedOrMissedSound": "fanfare",
    "partiallyCompletedOrMissedSound": "silent", "reminderSound": "bell", "timerNotificationSound": "gong",
    "automaticRemindersAreTimeSensitive": false, "completedNotificationIsTimeSensitive": true,
    "partiallyCompletedNotificationIsTimeSensitive": false, "timerNotificationsAreTimeSensitive": true,
    "liveActivityDisplayMode": "yes", "reminders": [{
      "uniqueId": "0195E8D4-7A00-7000-8000-00000000ABCD", "timeZone": "viewer", "trigger": {
        "type": "loc", "timeOfDay": {"h": 22, "m": 30, "s": 0}, "duration": 300.5, "region": {
          "type": "gym", "title": "Boulder hall", "latitude": 48.25, "longitude": -11.5, "radius": 150.0,
          "notifyOnEntry": true, "notifyOnExit": false, "icon": "ic_dumbbell"}},
      "daysOfWeek": [1, 3], "dayIndexesFromStart": [0, 3, 10], "dayIndexesFromFinish": [],
      "snoozeTime": {"h": 7, "m": 5, "s": 0}, "snoozeDate": 20240229, "snoozeTimeZone": "owner",
      "sound": "soft_bell", "timeSensitive": true}]})"));
  EXPECT_EQ(json(TimerReminderTime{.type = TimerReminderType::remaining, .duration = 90}),
            json::parse(R"({"type": "remaining", "duration": 90.0, "date": "1970-01-01T00:00:00Z"})"));
}

/// Takes every member of a coded record away, then makes it of the wrong kind. A member that must be there is missed by
/// its name; without one that may be absent the record reads as that much poorer, and writes it no more; and a wrong
/// kind is refused by name in both.
template <typename T>
void checkMembers(const json& full, const std::set<std::string>& required) {
  for (const auto& [key, value] : full.items()) {
    SCOPED_TRACE(key);
    for (const bool asNull : {false, true}) {
      json poorer = full;
      poorer.erase(key);
      const json expected = poorer;
      if (asNull) poorer[key] = nullptr;
      if (required.contains(key)) {
        EXPECT_EQ(complaint<T>(poorer), "Unable to read \"" + key + "\": missing");
      } else {
        EXPECT_EQ(json(poorer.get<T>()), expected);
      }
    }
    json wrong = full;
    wrong[key] = value.is_boolean() ? json(1) : json(true);
    EXPECT_EQ(complaint<T>(wrong), "Unable to read \"" + key + "\" from " + wrong[key].dump());
  }
  EXPECT_EQ(complaint<T>(json::array()).substr(0, 16), "Unable to read \"");
}

TEST(NotificationCoding, NamesWhatIsMissingOrWrongAndLeavesAbsentWhatIsAbsent) {
  const json settings = fullSettings();
  const json& reminder = settings["reminders"][0];
  checkMembers<TaskNotificationSettings>(
      settings, {"badgeMode", "reminderType", "maxReminders", "completedNotification", "reminders"});
  checkMembers<TaskReminder>(reminder, {"uniqueId", "trigger", "daysOfWeek"});
  checkMembers<Trigger>(reminder["trigger"], {"type"});
  checkMembers<TriggerRegion>(reminder["trigger"]["region"],
                              {"latitude", "longitude", "radius", "notifyOnEntry", "notifyOnExit"});
  checkMembers<TimerReminderTime>(TimerReminderTime{}, {"type", "duration", "date"});
}

TEST(NotificationCoding, ReadsUnknownTextsOfChoicesAsNoneAndRefusesWhatCannotBe) {
  const json full = fullSettings();
  json later = full;
  for (const char* const key : {"badgeTimeZone", "completedOrMissedSound", "liveActivityDisplayMode"}) {
    later[key] = "of a later version";
  }
  const auto settings = later.get<TaskNotificationSettings>();
  EXPECT_EQ(settings.badgeTimeZone, std::nullopt);
  EXPECT_EQ(settings.completedOrMissedSound, std::nullopt);
  EXPECT_EQ(settings.liveActivityDisplayMode, std::nullopt);

  const auto complaintOf = [&full](const char* pointer, const json& value) {
    json changed = full;
    changed[json::json_pointer(pointer)] = value;
    return complaint<TaskNotificationSettings>(changed);
  };
  const std::string inReminder = "Unable to read \"reminders\": Unable to read ";
  EXPECT_EQ(complaintOf("/badgeMode", "complete"), "Unable to read \"badgeMode\" from \"complete\"");
  EXPECT_EQ(complaintOf("/badgeFrom/h", 24), "Unable to read \"badgeFrom\": Unable to create HHMMSS");
  EXPECT_EQ(complaintOf("/maxReminders", 2.5), "Unable to read \"maxReminders\" from 2.5");
  EXPECT_EQ(complaintOf("/reminders/0/uniqueId", "abc"), inReminder + "\"uniqueId\" from \"abc\"");
  EXPECT_EQ(complaintOf("/reminders/0/daysOfWeek", {1, 7}), inReminder + "\"daysOfWeek\" from 7");
  EXPECT_EQ(complaintOf("/reminders/0/dayIndexesFromStart", {0, "1"}),
            inReminder + "\"dayIndexesFromStart\" from \"1\"");
  EXPECT_EQ(complaintOf("/reminders/0/snoozeDate", 20230229), inReminder + "\"snoozeDate\" from 20230229");
  EXPECT_EQ(complaintOf("/reminders/0/trigger/type", "timeOfDay"),
            inReminder + "\"trigger\": Unable to read \"type\" from \"timeOfDay\"");
  EXPECT_EQ(complaint<TimerReminderTime>({{"type", "completed"}, {"duration", 1}, {"date", "2024-02-30T00:00:00Z"}}),
            "Unable to read \"date\" from \"2024-02-30T00:00:00Z\"");
}

/// Puts each value into a coded record at a place: the good ones must be read and written again, the bad ones refused
/// by the name of their key.
template <typename T>
void checkBounds(json record, const char* place, const std::vector<json>& good, const std::vector<json>& bad) {
  const json::json_pointer pointer(place);
  for (const json& value : good) {
    record[pointer] = value;
    EXPECT_EQ(json(record.get<T>()), record) << place << " " << value;
  }
  for (const json& value : bad) {
    record[pointer] = value;
    const std::string refused = (value.is_array() ? value.back() : value).dump();
    const std::string key = pointer.back();
    EXPECT_TRUE(complaint<T>(record).ends_with("Unable to read \"" + key + "\" from " + refused))
        << place << " " << value << ": " << complaint<T>(record);
  }
}

// Numbers are read as they are, and complained of to whoever enters or uses them.
TEST(NotificationCoding, ReadsAnyFiniteNumber) {
  const auto check = checkBounds<TaskNotificationSettings>;
  const json settings = fullSettings();
  check(settings, "/maxReminders", {-1, std::numeric_limits<std::int64_t>::max()}, {2.5});
  for (const char* const indexes : {"/reminders/0/dayIndexesFromStart", "/reminders/0/dayIndexesFromFinish"})
    check(settings, indexes, {json::array({-1, 367})}, {json::array({0.5})});
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const char* const number : {"duration", "region/radius", "region/latitude", "region/longitude"})
    check(settings, ("/reminders/0/trigger/" + std::string(number)).c_str(), {-0.5, 1e300}, {infinity, -infinity});

  // With an offset, a text of the first or the last day can name a moment that could not be written again.
  checkBounds<TimerReminderTime>(
      TimerReminderTime{}, "/date", {"0000-01-01T00:00:00Z", "9999-12-31T23:59:59.999999Z"},
      {"0000-01-01T00:00:00+00:01", "9999-12-31T23:59:59-00:01", "9999-12-31T23:59:60Z", "10000-01-01T00:00:00Z"});
}

// One without is read as it was written; only its editor complains.
TEST(NotificationCoding, ATriggerMayLackWhatItsTypeNeeds) {
  std::string needed;
  for (const auto& row : RawValueTable<TriggerType>::rows) {
    const Trigger trigger{.type = row.value};
    EXPECT_EQ(json(trigger), json({{"type", row.raw}}));
    EXPECT_EQ(json(trigger).get<Trigger>(), trigger);
    EXPECT_EQ(problems(trigger).front().message(), std::string(neededField(row.value)) + " must be given");
    needed += std::string(neededField(row.value)) + " ";
  }
  EXPECT_EQ(needed, "timeOfDay timeOfDay region duration duration ");
}

TEST(NotificationDescription, SaysEveryFieldInOrder) {
  EXPECT_EQ(
      fullSettings().debugDescription(),
      "badgeMode=incomplete, badgeFrom=22:30:00, badgeTo=06:00:00, badgeTimeZone=owner, reminderType=custom, "
      "maxReminders=3, completedNotification=true, partiallyCompletedNotification=false, "
      "completedOrMissedSound=fanfare, partiallyCompletedOrMissedSound=silent, reminderSound=bell, "
      "timerNotificationSound=gong, automaticRemindersAreTimeSensitive=false, "
      "completedNotificationIsTimeSensitive=true, partiallyCompletedNotificationIsTimeSensitive=false, "
      "timerNotificationsAreTimeSensitive=true, liveActivityDisplayMode=yes, "
      "reminders=[{uniqueId=0195E8D4-7A00-7000-8000-00000000ABCD, trigger={type=loc, timeOfDay=22:30:00, "
      "region={type=gym, title=\"Boulder hall\", latitude=48.25, longitude=-11.5, radius=150, notifyOnEntry=true, "
      "notifyOnExit=false, icon=\"ic_dumbbell\"}, duration=300.5}, daysOfWeek=[1, 3], sound=soft_bell, "
      "timeSensitive=true}]");
  EXPECT_EQ((TaskReminder{.uniqueId = someID, .daysOfWeek = {}}).debugDescription(),
            "uniqueId=0195E8D4-7A00-7000-8000-00000000ABCD, trigger={type=tod, timeOfDay=nil, region=nil, "
            "duration=nil}, daysOfWeek=[], sound=nil, timeSensitive=nil");

  // However a place is called, it is one field in one line.
  const TriggerRegion forged{.title = "gym\", latitude=0\n", .icon = std::string(50, 'i') + "\\"};
  EXPECT_EQ(forged.debugDescription(),
            "type=nil, title=\"gym\\\", latitude=0\\n\", latitude=0, longitude=0, radius=100, notifyOnEntry=true, "
            "notifyOnExit=false, icon=\"" +
                std::string(50, 'i') + "\\\\\"");
}

TEST(NotificationValidation, SaysWhatAPersonHasToMend) {
  const auto messages = [](const auto& value) {
    std::string text;
    for (const NotificationProblem& problem : problems(value)) text += problem.message() + "; ";
    return text;
  };
  EXPECT_EQ(messages(fullSettings()), "");
  EXPECT_EQ(messages(TriggerRegion{.latitude = -90, .longitude = 180, .radius = 0.1}), "");
  EXPECT_EQ(
      messages(TriggerRegion{.latitude = 90.5, .longitude = -181, .radius = 0, .notifyOnEntry = false}),
      "latitude must be from -90 to 90, not 90.5; longitude must be from -180 to 180, not -181; "
      "radius must be above 0 and at most 100000000, not 0; notifyOnEntry must be true where notifyOnExit is false; ");
  EXPECT_EQ(messages(Trigger{.type = TriggerType::durationAfterStart, .duration = 0}), "");
  // What the type does not use is kept and written, too.
  EXPECT_EQ(messages(Trigger{.type = TriggerType::timeOfDay, .timeOfDay = qz::HHMMSS::midnight, .duration = -1}),
            "duration must be from 0 to 1000000000, not -1; ");

  TaskNotificationSettings settings{.badgeTo = qz::HHMMSS::midday, .maxReminders = -1};
  settings.reminders.push_back({.uniqueId = someID,
                                .trigger = {.type = TriggerType::durationBeforeFinish, .duration = -1},
                                .daysOfWeek = {},
                                .dayIndexesFromStart = std::set<std::int64_t>{0, 367},
                                .dayIndexesFromFinish = std::set<std::int64_t>{-2, 4},
                                .snoozeDate = qz::YYYYMMDD(2023, 2, 29)});
  EXPECT_EQ(messages(settings),
            "badgeFrom must be given; maxReminders must be 0 or more, not -1; "
            "duration must be from 0 to 1000000000, not -1; daysOfWeek must hold at least one day; "
            "dayIndexesFromStart must hold numbers from 0 to 366, not 367; "
            "dayIndexesFromFinish must hold numbers from 0 to 366, not -2; "
            "snoozeTime must be given; snoozeDate must be a day of the calendar; ");
  EXPECT_EQ(problems(settings).front().reminder, std::nullopt);
  EXPECT_EQ(problems(settings).back().reminder, someID);
}

TEST(NotificationDefaults, FollowTheKindOfTask) {
  using Type = DefaultSettingsTaskType;
  const auto of = [](const Type& type) { return defaultNotificationSettings(type, someID); };
  for (const Type& type : {Type::timer(1500), Type::screenTime(600), Type::untimed(), Type::meditation()}) {
    const TaskNotificationSettings settings = of(type);
    EXPECT_EQ(settings.reminderType, ReminderType::none);
    EXPECT_EQ(settings.badgeMode, BadgeMode::includeWhenIncomplete);
    EXPECT_TRUE(settings.reminders.empty());
    EXPECT_EQ(settings.completedNotification, type.kind() != Type::Kind::untimed);
  }
  EXPECT_EQ(of(Type::untimed()), TaskNotificationSettings());

  EXPECT_EQ(of(Type::timer(1500)).timerNotificationsAreTimeSensitive, true);
  EXPECT_EQ(of(Type::timer(60)).liveActivityDisplayMode, LiveActivityDisplayMode::automatic);
  EXPECT_EQ(of(Type::timer(59.5)).liveActivityDisplayMode, LiveActivityDisplayMode::no);

  const TaskNotificationSettings limited = of(Type::screenTime(600.5));
  EXPECT_EQ(limited.reminderType, ReminderType::custom);
  ASSERT_EQ(limited.reminders.size(), 1);
  EXPECT_EQ(limited.reminders[0].uniqueId, someID);
  EXPECT_EQ(limited.reminders[0].trigger, (Trigger{.type = TriggerType::durationBeforeFinish, .duration = 300}));
  EXPECT_TRUE(problems(limited).empty());

  const TaskNotificationSettings meditation = of(Type::meditation());
  for (const auto& row : RawValueTable<SoundType>::rows) {
    const bool isOver = row.value == SoundType::taskComplete || row.value == SoundType::taskMissed ||
                        row.value == SoundType::timerNotification;
    EXPECT_EQ(meditation.sound(row.value), isOver ? SoundEffect::softBell : SoundEffect::silent) << row.name;
    EXPECT_EQ(TaskNotificationSettings().sound(row.value), defaultSound(row.value)) << row.name;
  }
  for (const auto& sensitive :
       {meditation.automaticRemindersAreTimeSensitive, meditation.completedNotificationIsTimeSensitive,
        meditation.partiallyCompletedNotificationIsTimeSensitive, meditation.timerNotificationsAreTimeSensitive}) {
    EXPECT_EQ(sensitive, false);
  }
}

}  // namespace
}  // namespace habitra
