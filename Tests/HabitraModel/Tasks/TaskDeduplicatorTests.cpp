#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreVerification.h>
#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <tuple>

#include "../Store/AllRows.h"
#include "../Store/StoreFixture.h"

namespace habitra {
namespace {

using namespace std::string_literals;
using std::chrono::seconds;
using Report = TaskDeduplicator::Report;
using Type = TaskLogEntryType;

/// A store that mirroring has brought double rows into.
struct MirroredStore {
  TaskEntity& addTask(const std::string& title, const std::string& uniqueId, qz::Moment created = testMoment) {
    TaskEntity task = newlyMadeTask(title, qz::DayOfWeek::monday, created, "UTC");
    task.uniqueId = uniqueId;
    return context.insert(task);
  }
  ObjectID addEntry(const TaskEntity& task, std::int32_t day, Type type, const std::string& uniqueId,
                    qz::Moment created = testMoment, double amount = 0) {
    TaskLogEntryEntity entry;
    entry.task = task.objectID;
    entry.entryDate = entry.entryPeriodFrom = entry.entryPeriodTo = day;
    entry.entryPeriodType = "d";
    entry.entryType = rawValue(type);
    entry.progressTotal = amount;
    entry.uniqueId = uniqueId;
    entry.createdTimestamp = created;
    return context.insertLogEntry(entry);
  }
  template <typename T>
  T& add(T row, ObjectID task) {
    row.task = task;
    return context.insert(row);
  }

  Report run() {
    context.save({});
    const Report report = TaskDeduplicator().deduplicate(context);
    context.save({});
    return report;
  }

  /// The log as identifiers, by day, then by creation.
  std::vector<std::string> log(const TaskEntity& task) {
    std::vector<std::string> identifiers;
    for (const auto& entry : context.fetchLogEntries(task.objectID)) identifiers.push_back(*entry.uniqueId);
    return identifiers;
  }
  std::size_t tasks() { return context.fetchAll<TaskEntity>().size(); }

  std::shared_ptr<SettableClock> clock = std::make_shared<SettableClock>(testMoment);
  StoreContext context{Store::inMemory(clock)};
};

class TaskDeduplicatorTest : public testing::Test, protected MirroredStore {};

using Names = std::vector<std::string>;

TEST_F(TaskDeduplicatorTest, GroupsAreTasksThatAgreeInTitleFrequencyAndCreation) {
  TaskEntity& first = addTask("Walk", "W");
  addTask("Walk", "X");
  TaskEntity& second = addTask("Walk", "W", testMoment + std::chrono::milliseconds(999));
  addTask("Run", "W");
  addTask("Walk", "W", testMoment + seconds(1));
  setFrequency(addTask("Walk", "W"), {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3});
  second.colorInfo = "red";
  const auto groups = TaskDeduplicator::duplicateGroups(context);
  ASSERT_EQ(groups.size(), 1u);
  EXPECT_EQ(groups[0].objectIDs, (std::set{first.objectID, second.objectID}));

  EXPECT_EQ(run(), (Report{.unitedTasks = 1, .renamedTasks = 3}));
  EXPECT_EQ(context.fetch<TaskEntity>("uniqueId", "W"), std::vector{&first});
  EXPECT_EQ(run(), Report{});
}

TEST_F(TaskDeduplicatorTest, TasksThatAreNotOneKeepApartWithTheirPauses) {
  TaskEntity& walk = addTask("Walk", "W");
  TaskEntity& run = addTask("Run", "W");
  const ObjectID mine = addEntry(run, 20240110, Type::completedManuallyFull, "1");
  StoreSettings(context).set(settings::pausesOf("W"), Bytes{1, 2});
  context.save({});

  qz::log::configure({.verbose = true});
  testing::internal::CaptureStderr();
  const Report report = TaskDeduplicator().deduplicate(context);
  const std::string log = testing::internal::GetCapturedStderr();
  qz::log::configure({});
  EXPECT_EQ(report, Report{.renamedTasks = 1});
  EXPECT_NE(log.find("Updating task IDs for duplicate entries (1)"), std::string::npos) << log;
  EXPECT_NE(log.find("Updating duplicate task ID (W)"), std::string::npos) << log;
  EXPECT_EQ(walk.uniqueId, "W");
  EXPECT_NE(run.uniqueId, "W");
  EXPECT_EQ(StoreSettings(context).get<Bytes>(settings::pausesOf("W")), (Bytes{1, 2}));
  EXPECT_EQ(StoreSettings(context).get<Bytes>(settings::pausesOf(*run.uniqueId)), (Bytes{1, 2}));
  EXPECT_EQ(context.findLogEntry(mine)->task, run.objectID);
}

TEST_F(TaskDeduplicatorTest, EntriesAreUnitedThatSayTheSameOneToOneThoseWithTheSameIdentifierFirst) {
  TaskEntity& older = addTask("Walk", "W");
  TaskEntity& newer = addTask("Walk", "W");
  older.lastProcessedDate = testMoment;
  newer.lastProcessedDate = testMoment - std::chrono::days(2);
  addEntry(older, 20240101, Type::completedManuallyPartial, "both");
  addEntry(older, 20240102, Type::completedManuallyPartial, "a");
  addEntry(older, 20240103, Type::completedManuallyPartial, "old");
  addEntry(newer, 20240101, Type::completedManuallyPartial, "both");
  addEntry(newer, 20240102, Type::completedManuallyPartial, "b", testMoment + std::chrono::milliseconds(1));
  addEntry(newer, 20240102, Type::completedManuallyPartial, "c");
  addEntry(newer, 20240102, Type::completedManuallyPartial, "d", testMoment + seconds(1));
  addEntry(newer, 20240102, Type::missedManuallyPartial, "e");
  addEntry(newer, 20240104, Type::completedManuallyPartial, "old", testMoment, 1);  // it was changed there
  for (const char* entry : {"old", "a"}) add(TaskTimerEntity{.entryId = entry}, older.objectID);
  for (const char* entry : {"old", "c", "b"}) add(TaskTimerEntity{.entryId = entry}, newer.objectID);
  EXPECT_EQ(run(), Report{.unitedTasks = 1});
  EXPECT_EQ(tasks(), 1u);
  EXPECT_EQ(log(older), (Names{"both", "b", "a", "d", "e", "old"})) << "c was a, and the newer log had all of the day";
  EXPECT_EQ(context.findLogEntry("old")->entryDate, 20240104) << "and the larger amount";
  Names named;
  for (const auto* timer : context.fetchRelated<TaskTimerEntity>("task", older.objectID))
    named.push_back(*timer->entryId);
  EXPECT_EQ(named, (Names{"old", "a", "b"})) << "timers that are alike then are one";
  // Before 2 January, of which each log learns something.
  EXPECT_EQ(older.lastProcessedDate, qz::Moment(std::chrono::sys_days(std::chrono::year(2023) / 12 / 31)));
}

TEST_F(TaskDeduplicatorTest, AnIdentifierIsOneEntryWithTheLargerAmountAndOtherAmountsAreOtherEntries) {
  TaskEntity& older = addTask("Walk", "W");
  TaskEntity& newer = addTask("Walk", "W");
  const auto addBoth = [&](std::int32_t day, Type type, const std::string& name, const std::string& otherName) {
    addEntry(older, day, type, name, testMoment, 5);
    addEntry(newer, day, type, otherName, testMoment, 3);
  };
  addBoth(20240101, Type::completedManuallyPartial, "1", "2");
  addBoth(20240102, Type::completedManuallyPartial, "3", "3");
  addBoth(20240103, Type::completedAutomaticallyPartial, "4", "5");
  addEntry(newer, 20240104, Type::completedManuallyPartial, "6", testMoment, 1);
  addEntry(newer, 20240104, Type::completedManuallyPartial, "6", testMoment, 2);
  for (const TaskEntity* task : {&older, &newer}) {
    TaskLogEntryEntity undated;
    undated.entryDate = 20240105;
    undated.task = task->objectID;
    undated.uniqueId = task == &older ? "7" : "8";
    context.insertLogEntry(undated);
    const auto count = [&](const char* id, std::int16_t quantity, std::optional<qz::Moment> created) {
      add(TaskCounterEntity{.createdTimestamp = created, .quantity = quantity, .uniqueId = id}, task->objectID);
    };
    count("same", task == &older ? 1 : 2, testMoment);
    count(task == &older ? "a" : "b", 4, testMoment);
    count(task == &older ? "c" : "d", 8, std::nullopt);
  }
  EXPECT_EQ(run(), (Report{.unitedTasks = 1, .unitedRows = 1}));
  EXPECT_EQ(log(older), (Names{"1", "2", "3", "4", "5", "6", "7", "8"})) << "without a moment nothing is known";
  EXPECT_EQ(context.findLogEntry("3")->progressTotal, 5);
  EXPECT_EQ(context.findLogEntry("6")->progressTotal, 2);
  std::map<std::string, int> counted;
  for (const auto* row : context.fetchAll<TaskCounterEntity>()) counted[*row->uniqueId] = row->quantity;
  EXPECT_EQ(counted, (std::map<std::string, int>{{"same", 2}, {"a", 4}, {"c", 8}, {"d", 8}}));
}

TEST_F(TaskDeduplicatorTest, OfWhatThereIsOneOfTheLastChoiceStays) {
  TaskEntity& older = addTask("Walk", "W");
  TaskEntity& newer = addTask("Walk", "W");
  TaskEntity& other = addTask("Read", "R");
  const auto addSettings = [&](const TaskEntity& task, const char* mode, std::optional<qz::Moment> updated) {
    add(TaskNotificationSettingsEntity{.badgeMode = mode, .lastUpdated = updated}, task.objectID);
  };
  addSettings(older, "a", testMoment);
  addSettings(newer, "b", testMoment + seconds(1));
  addSettings(other, "c", testMoment);
  addSettings(other, "d", testMoment);
  addSettings(other, "e", std::nullopt);
  add(TaskShareEntity{.status = "f", .statusUpdated = testMoment}, other.objectID);
  add(TaskShareEntity{.status = "g", .summaryJsonUpdated = testMoment + seconds(1)}, other.objectID);
  const auto addSetting = [&](std::string key, int second, std::int64_t value) {
    context.insert(SettingEntity{.settingKey = key, .dateCreated = testMoment + seconds(second), .intValue = value});
  };
  addSetting("startOfDay", 3, 100'000);  // of a newer version, it seems
  addSetting("startOfDay", 2, 7200);
  addSetting("startOfDay", 1, 3600);
  addSetting("startOfDay", 0, 100'000);
  context.insert(SettingEntity{.settingKey = "startOfDay", .dateCreated = testMoment, .stringValue = "other"});
  addSetting("not known yet", 1, 1);
  addSetting("not known yet", 2, 2);
  addSetting("not known yet", 0, 2);

  EXPECT_EQ(run(), (Report{.unitedTasks = 1, .unitedRows = 6}));
  const auto settings = context.fetchAll<TaskNotificationSettingsEntity>();
  ASSERT_EQ(settings.size(), 2u);
  EXPECT_EQ(std::pair(settings[0]->task, settings[0]->badgeMode), std::pair(older.objectID, std::optional("b"s)));
  EXPECT_EQ(std::pair(settings[1]->task, settings[1]->badgeMode), std::pair(other.objectID, std::optional("c"s)));
  EXPECT_EQ(context.fetchAll<TaskShareEntity>().at(0)->status, "g");
  using Values = std::vector<std::int64_t>;
  EXPECT_EQ(StoreSettings(context).all<std::int64_t>("startOfDay"), (Values{100'000, 7200}))
      << "what can be read stays beside what cannot";
  EXPECT_EQ(StoreSettings(context).get<std::string>("startOfDay"), "other") << "of another kind";
  EXPECT_EQ(StoreSettings(context).all<std::int64_t>("not known yet"), (Values{2, 1}));
}

TEST_F(TaskDeduplicatorTest, WhatTheSystemFilledInGivesWayToWhatIsKnownAndAPersonsLastWordStays) {
  TaskEntity& older = addTask("Walk", "W");
  TaskEntity& newer = addTask("Walk", "W");
  const auto later = testMoment + seconds(5);
  addEntry(older, 20240101, Type::missedAutomaticallyFull, "1 auto");
  addEntry(newer, 20240101, Type::completedManuallyFull, "1", later);
  addEntry(older, 20240102, Type::skippedManuallyFull, "2");
  addEntry(newer, 20240102, Type::missedAutomaticallyFull, "2 auto", later);
  addEntry(older, 20240103, Type::missedAutomaticallyFull, "3");
  addEntry(newer, 20240103, Type::missedAutomaticallyFull, "3 again", later);
  addEntry(older, 20240104, Type::missedAutomaticallyFull, "4 filled in");
  addEntry(newer, 20240104, Type::completedAutomaticallyFull, "4 measured", later);
  addEntry(older, 20240105, Type::completedManuallyFull, "5");
  addEntry(newer, 20240105, Type::skippedManuallyFull, "5 too", later);
  addEntry(older, 20240106, Type::completedManuallyPartial, "6");
  addEntry(newer, 20240106, Type::missedAutomaticallyFull, "6 too", later);
  run();
  EXPECT_EQ(log(older), (Names{"1", "2", "3", "4 measured", "5 too", "6"}));
}

TEST_F(TaskDeduplicatorTest, WhatBelongsToATaskGoesOverOnce) {
  TaskEntity& older = addTask("Walk", "W");
  TaskEntity& newer = addTask("Walk", "W");
  TaskCategoryEntity& health = context.insert(TaskCategoryEntity{.title = "Health"});
  TaskCategoryEntity& evening = context.insert(TaskCategoryEntity{.title = "Evening"});
  addCategory(context, older, health);
  addCategory(context, newer, health);
  addCategory(context, newer, evening);
  newer.userProfile = context.insert(UserProfileEntity{.title = "Page 2"}).objectID;
  for (const TaskEntity* task : {&older, &newer}) {
    add(TaskNoteEntity{.content = "same", .uniqueId = "N"}, task->objectID);
    add(TaskNoteEntity{.content = task == &older ? "before" : "after", .uniqueId = "M"}, task->objectID);
    add(TaskCounterEntity{.entryDate = 20240101, .quantity = 1, .uniqueId = "C"}, task->objectID);
    add(TaskNotificationRemindersEntity{.timeOfDay = task == &older ? 1 : 2}, task->objectID);
    add(TaskTemporalDataEntity{.bestStreak = task == &older ? 1 : 2}, task->objectID);
  }
  add(TaskNotificationSettingsEntity{.badgeMode = "b"}, newer.objectID);
  const ObjectID kept = addEntry(older, 20240101, Type::completedManuallyFull, "entry 1");
  const ObjectID gone = addEntry(newer, 20240101, Type::completedManuallyFull, "entry 2");
  add(TaskTimerEntity{.entryId = "entry 2", .start = testMoment}, newer.objectID);
  add(TaskTimerEntity{.entryId = "entry 1", .start = testMoment}, older.objectID);
  add(TaskTimerEntity{.entryId = "entry 2", .start = testMoment + seconds(9)}, newer.objectID);
  context.insert(HealthKitRequestEntity{.status = "pending", .type = "both", .taskLogEntry = kept});
  context.insert(HealthKitRequestEntity{.status = "done", .type = "both", .taskLogEntry = gone});
  context.insert(HealthKitRequestEntity{.type = "only here", .taskLogEntry = gone});

  EXPECT_EQ(run(), (Report{.unitedTasks = 1, .renamedRows = 1})) << "a note that was changed on one side";
  const auto of = [&]<typename T>(std::type_identity<T>) { return context.fetchRelated<T>("task", older.objectID); };
  EXPECT_EQ(categoriesOf(context, older), (std::vector{&health, &evening}));
  EXPECT_EQ(of(std::type_identity<TaskNoteEntity>{}).size(), 3u);
  EXPECT_EQ(of(std::type_identity<TaskCounterEntity>{}).size(), 1u);
  EXPECT_EQ(of(std::type_identity<TaskNotificationRemindersEntity>{}).size(), 2u);
  EXPECT_EQ(of(std::type_identity<TaskTemporalDataEntity>{}).at(0)->bestStreak, 1);
  EXPECT_EQ(of(std::type_identity<TaskTemporalDataEntity>{}).size(), 1u);
  EXPECT_EQ(of(std::type_identity<TaskNotificationSettingsEntity>{}).at(0)->badgeMode, "b");
  EXPECT_EQ(context.find<UserProfileEntity>(older.userProfile)->title, "Page 2");
  for (const TaskTimerEntity* timer : of(std::type_identity<TaskTimerEntity>{})) EXPECT_EQ(timer->entryId, "entry 1");
  EXPECT_EQ(of(std::type_identity<TaskTimerEntity>{}).size(), 2u);
  EXPECT_EQ(context.fetchAll<HealthKitRequestEntity>().size(), 2u);
  const auto requests = context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", kept);
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0]->status, "done");
}

TEST_F(TaskDeduplicatorTest, OtherRowsAreUnitedWhenAlikeAndRenamedWhenNot) {
  TaskEntity& walk = addTask("Walk", "W");
  TaskEntity& read = addTask("Read", "R");
  TaskCategoryEntity& health = context.insert(TaskCategoryEntity{.title = "Health", .uniqueId = "C"});
  TaskCategoryEntity& again = context.insert(TaskCategoryEntity{.title = "Health", .uniqueId = "C"});
  TaskCategoryEntity& other = context.insert(TaskCategoryEntity{.title = "Sport", .uniqueId = "C"});
  addCategory(context, walk, health);
  addCategory(context, walk, again);
  addCategory(context, read, again);
  addCategory(context, read, other);
  UserProfileEntity& page = context.insert(UserProfileEntity{.title = "Page", .uniqueId = "P"});
  read.userProfile = context.insert(UserProfileEntity{.title = "Page", .uniqueId = "P"}).objectID;

  const ObjectID first = addEntry(walk, 20240101, Type::completedManuallyFull, "E");
  const ObjectID mirrored = addEntry(walk, 20240101, Type::completedManuallyFull, "E");
  addEntry(walk, 20240102, Type::completedManuallyFull, "E");
  const ObjectID ofOther = addEntry(read, 20240101, Type::completedManuallyFull, "E");
  context.insert(HealthKitRequestEntity{.type = "t", .taskLogEntry = mirrored});
  add(TaskTimerEntity{.entryId = "E"}, walk.objectID);
  const TaskTimerEntity& timer = add(TaskTimerEntity{.entryId = "E"}, read.objectID);

  // Of the links of both tasks to the category that goes, one is double.
  EXPECT_EQ(run(), (Report{.unitedRows = 5, .renamedRows = 2}));
  EXPECT_EQ(categoriesOf(context, walk), std::vector{&health});
  EXPECT_EQ(categoriesOf(context, read), (std::vector{&health, &other}));
  EXPECT_NE(other.uniqueId, "C");
  EXPECT_EQ(read.userProfile, page.objectID);
  EXPECT_EQ(log(walk), Names{"E"});
  EXPECT_EQ(context.fetchLogEntries("E").at(0).entryDate, 20240102);
  EXPECT_EQ(context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", first).size(), 1u);
  EXPECT_EQ(timer.entryId, context.findLogEntry(ofOther)->uniqueId);
}

/// What the entries of a log said, by title and identifier: day, type and amount.
using Said = std::map<std::pair<std::string, std::string>, std::set<std::tuple<std::int32_t, std::int16_t, double>>>;

Said saidIn(StoreContext& context) {
  Said said;
  for (const TaskEntity* task : context.fetchAll<TaskEntity>())
    for (const auto& entry : context.fetchLogEntries(task->objectID))
      said[{*task->title, *entry.uniqueId}].emplace(entry.entryDate, entry.entryType, entry.progressTotal);
  return said;
}

void makeRandomRows(MirroredStore& store) {
  using rc::gen::inRange;
  const auto pick = [](const std::string& letters) { return std::string(1, *rc::gen::elementOf(letters)); };
  std::vector<TaskEntity*> tasks;
  for (int i = *inRange(1, 6); i > 0; --i) tasks.push_back(&store.addTask(pick("AB"), pick("XY")));
  // None takes another's place; LogUnionTests.cpp has those that do.
  // By place: what is tried again to find a smaller example has rows of its own.
  const auto pickTask = [&]() -> TaskEntity& { return *tasks[*inRange<std::size_t>(0, tasks.size())]; };
  constexpr std::array types{Type::missedManuallyPartial, Type::timerManual, Type::externalHealthData,
                             Type::completedManuallyPartial, Type::completedAutomaticallyPartial};
  for (int i = *inRange(0, 25); i > 0; --i) {
    // The same identifier often says the same; another one may as well.
    const int number = *inRange(0, 12);
    const int content = *rc::gen::element(number, *inRange(0, 12));
    const ObjectID entry =
        store.addEntry(pickTask(), 20240101 + content % 5, types[static_cast<std::size_t>(content % 5)],
                       std::to_string(number), testMoment + seconds(content % 3 == 0), content >= 10 ? 1 : 0);
    if (*inRange(0, 3) == 0) store.context.insert(HealthKitRequestEntity{.type = pick("st"), .taskLogEntry = entry});
  }
  for (int i = *inRange(0, 6); i > 0; --i) {
    TaskEntity& task = pickTask();
    store.add(TaskNoteEntity{.content = pick("pq"), .uniqueId = pick("no")}, task.objectID);
    store.add(TaskTimerEntity{.entryId = std::to_string(*inRange(0, 12))}, task.objectID);
    store.add(TaskNotificationSettingsEntity{.lastUpdated = testMoment + seconds(*inRange(0, 9))}, task.objectID);
    auto& category = store.context.insert(TaskCategoryEntity{.title = pick("ST"), .uniqueId = pick("cd")});
    addCategory(store.context, task, category);
    task.userProfile = store.context.insert(UserProfileEntity{.title = pick("UV"), .uniqueId = pick("e")}).objectID;
  }
}

RC_GTEST_PROP(TaskDeduplicatorProperty, nothingIsLostNothingIsDoubleAndASecondRunChangesNothing, ()) {
  MirroredStore store;
  makeRandomRows(store);
  const Said before = saidIn(store.context);
  std::map<std::pair<std::string, std::string>, qz::Moment> lastChoices;  // by title and identifier
  std::set<std::string> notes;
  std::set<std::pair<std::string, std::string>> categories;
  for (const TaskEntity* task : store.context.fetchAll<TaskEntity>()) {
    if (const auto* settings = rowOfTask<TaskNotificationSettingsEntity>(store.context, task->objectID)) {
      qz::Moment& last = lastChoices[{*task->title, *task->uniqueId}];
      last = std::max(last, *settings->lastUpdated);
    }
    for (const auto* category : categoriesOf(store.context, *task)) categories.emplace(*task->title, *category->title);
    for (const auto* note : store.context.fetchRelated<TaskNoteEntity>("task", task->objectID))
      notes.insert(*task->title + *note->content);
  }
  store.run();

  std::set<std::pair<std::string, qz::Moment>> choices;
  for (const TaskEntity* task : store.context.fetchAll<TaskEntity>()) {
    const auto settings = store.context.fetchRelated<TaskNotificationSettingsEntity>("task", task->objectID);
    RC_ASSERT(settings.size() <= 1);
    for (const auto* row : settings) choices.emplace(*task->title, *row->lastUpdated);
    for (const auto* category : categoriesOf(store.context, *task)) categories.erase({*task->title, *category->title});
    for (const auto* note : store.context.fetchRelated<TaskNoteEntity>("task", task->objectID))
      notes.erase(*task->title + *note->content);
  }
  RC_ASSERT(notes.empty() && categories.empty());
  for (const auto& [task, last] : lastChoices) RC_ASSERT(choices.contains({task.first, last}));
  std::map<std::string, Said::mapped_type> after;
  for (const auto& [entry, said] : saidIn(store.context)) after[entry.first].insert(said.begin(), said.end());
  for (const auto& [entry, said] : before)
    RC_ASSERT(std::ranges::any_of(said, [&](const auto& what) { return after[entry.first].contains(what); }));

  forEveryEntity([&]<typename T>(std::type_identity<T>) {
    if (T::description().position("uniqueId")) RC_ASSERT(store.context.repeatedTexts<T>("uniqueId").empty());
  });
  RC_ASSERT(StoreVerification::verifyChecksums(store.context).empty());
  RC_ASSERT(TaskDeduplicator().deduplicate(store.context) == Report{});
  RC_ASSERT(!store.context.hasChanges());
}

}  // namespace
}  // namespace habitra
