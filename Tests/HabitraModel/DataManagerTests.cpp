#include <HabitraModel/DataManager.h>
#include <HabitraModel/Store/Files/StoreCopy.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

#include "Store/StoreFixture.h"

namespace habitra {
namespace {

using namespace std::chrono_literals;

std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class DataManagerTest : public StoreTest {
 protected:
  [[nodiscard]] std::filesystem::path home() const { return file().parent_path(); }
  [[nodiscard]] std::filesystem::path cloudFile() const { return home() / "Habitra-CloudKit.sqlite"; }
  [[nodiscard]] std::unique_ptr<DataManager> manager() const {
    return std::make_unique<DataManager>(DataManager::storeLocation(home()), clock_, 20ms);
  }

  static std::vector<std::string> titles(DataManager& manager) {
    std::vector<std::string> titles;
    const auto context = manager.contextForReading();
    if (context == nullptr) return titles;
    for (const TaskEntity* task : context->fetchAll<TaskEntity>()) titles.push_back(task->title.value_or(""));
    return titles;
  }
  static void addTask(DataManager& manager, const std::string& title) {
    const auto context = manager.context();
    context->insert(titled(title));
    context->save({});
  }
  static std::filesystem::path copyOf(const std::filesystem::path& store, const std::filesystem::path& to) {
    copyStore(store, to);
    return to;
  }
  void makeOtherStore(const std::filesystem::path& at) const {
    DataManager other(DataManager::storeLocation(folder_ / "elsewhere"), clock_);
    addTask(other, "Other");
    copyStore(folder_ / "elsewhere" / "Habitra-Local.sqlite", at);
  }
  [[nodiscard]] std::ptrdiff_t backups() const {
    const auto folder = home() / "Backups";
    return std::filesystem::exists(folder) ? std::distance(std::filesystem::directory_iterator(folder), {}) : 0;
  }
  /// Counts the posts of one name.
  struct Counter {
    Counter(DataManager& manager, const char* name)
        : observation(manager.notifications().addObserver(name, [this] { ++count; })) {}
    int count = 0;
    qz::NotificationCenter::Observation observation;
  };
};

TEST_F(DataManagerTest, FindsTheHomeByTheEnvironment) {
  using Variables = std::map<std::string, std::string>;
  const auto home = [](const Variables& variables) {
    return DataManager::homeDirectory([&variables](const std::string& name) -> std::optional<std::string> {
      const auto found = variables.find(name);
      return found == variables.end() ? std::nullopt : std::optional(found->second);
    });
  };
  EXPECT_EQ(home({{"HABITRA_HOME", "/a"}, {"XDG_DATA_HOME", "/b"}, {"HOME", "/c"}}), "/a");
  EXPECT_EQ(home({{"HABITRA_HOME", ""}, {"XDG_DATA_HOME", "/b"}, {"HOME", "/c"}}), "/b/habitra");
  EXPECT_EQ(home({{"XDG_DATA_HOME", "relative"}, {"HOME", "/c"}}), "/c/.local/share/habitra");
  EXPECT_THROW((void)home({}), qz::Error);
  EXPECT_EQ(DataManager::storeLocation("/a").file(), std::filesystem::path("/a/Habitra-Local.sqlite"));
}

TEST_F(DataManagerTest, GivesOutContextsAndIdentifiers) {
  DataManager manager(DataManager::ContainerLocation::url(file()), clock_);
  EXPECT_EQ(manager.contextForReading(), nullptr);
  const auto context = manager.context();
  const qz::UniqueID requested = qz::UniqueID::generate(testMoment);
  EXPECT_EQ(manager.generateUniqueTaskId(*context, requested), requested);
  context->insert(TaskEntity{.uniqueId = requested.text()});
  EXPECT_NE(manager.generateUniqueTaskId(*context, requested), requested) << "an unsaved task counts";
  context->save({.author = DataManager::Author::siriUI});
  EXPECT_NE(manager.contextForReading(), nullptr);
  EXPECT_EQ(manager.home(), file().parent_path());
  for (const Author author : allAuthors) EXPECT_EQ(authorFromRawValue(rawValue(author)), author);
}

TEST_F(DataManagerTest, MaintenanceIsToldOfAndEndsWhateverHappens) {
  const auto manager = this->manager();
  addTask(*manager, "Walk");
  Counter ended(*manager, DataManager::maintenanceDidFinish);
  EXPECT_FALSE(manager->isInMaintenanceMode());
  manager->performMaintenance([&] {
    EXPECT_TRUE(manager->isInMaintenanceMode());
    EXPECT_FALSE(manager->activeContainer()->isOpen());
    manager->performMaintenance([] {});
    EXPECT_TRUE(manager->isInMaintenanceMode()) << "an inner one ends the outer one";
    EXPECT_EQ(ended.count, 0);
  });
  EXPECT_FALSE(manager->isInMaintenanceMode());
  EXPECT_EQ(ended.count, 1);
  EXPECT_THROW(manager->performMaintenance([] { throw qz::Error("no"); }), qz::Error);
  EXPECT_FALSE(manager->isInMaintenanceMode());
  EXPECT_EQ(ended.count, 2);
  EXPECT_EQ(titles(*manager), std::vector<std::string>{"Walk"}) << "the store opens again afterwards";
}

TEST_F(DataManagerTest, SwitchingTakesTheStoreAlongAndKeepsWhatWasThere) {
  const auto manager = this->manager();
  addTask(*manager, "Walk");
  Counter moved(*manager, DataManager::databaseStorageLocationChanged);
  manager->switchStorage("private");
  EXPECT_TRUE(manager->isCloudSyncOn());
  EXPECT_EQ(manager->sharedDefaults().get<std::string>(DataManager::cloudContainerKey), "private");
  EXPECT_EQ(titles(*manager), std::vector<std::string>{"Walk"});
  addTask(*manager, "Read");
  EXPECT_EQ(std::filesystem::canonical(manager->context()->store().file()), std::filesystem::canonical(cloudFile()));
  EXPECT_EQ(runSQL(file(), "SELECT title FROM TaskEntity"), std::vector<std::string>{"Walk"}) << "the old file stays";
  manager->switchStorage("private");
  EXPECT_EQ(moved.count, 1) << "nothing is moved to where it is";

  manager->switchStorage(std::nullopt);
  EXPECT_EQ(moved.count, 2);
  EXPECT_FALSE(manager->isCloudSyncOn());
  EXPECT_EQ(titles(*manager), (std::vector<std::string>{"Walk", "Read"}));
  EXPECT_EQ(backups(), 1) << "the local store of before is kept";
  EXPECT_EQ(titles(*this->manager()), (std::vector<std::string>{"Walk", "Read"})) << "another program agrees";
}

TEST_F(DataManagerTest, NobodyMovesAStoreUnderSomebodysHands) {
  addTask(*manager(), "Walk");
  const auto reader = manager();
  const auto held = reader->contextForReading();
  const std::string before = bytesOf(file());
  const auto mover = manager();
  try {
    mover->switchStorage("private");
    FAIL() << "it was moved";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreError::Kind::busy);
    EXPECT_NE(std::string(error.what()).find("this program itself"), std::string::npos)
        << "it does not say who is in the way: " << error.what();
  }
  EXPECT_FALSE(mover->isCloudSyncOn());
  EXPECT_FALSE(mover->isInMaintenanceMode());
  EXPECT_FALSE(std::filesystem::exists(cloudFile()));
  EXPECT_EQ(bytesOf(file()), before);
  EXPECT_EQ(titles(*mover), std::vector<std::string>{"Walk"});
  DataManager memory(ContainerLocation::inMemory(), clock_);
  EXPECT_THROW(memory.switchStorage("private"), StoreError);
}

TEST_F(DataManagerTest, StoresOfEarlierVersionsAreTakenOver) {
  std::filesystem::create_directories(home());
  std::filesystem::permissions(home(), std::filesystem::perms::owner_all);
  std::filesystem::copy_file(DATA_FOLDER "/version-1.sqlite", home() / "Habitra-Production.sqlite");
  const std::string before = bytesOf(home() / "Habitra-Production.sqlite");
  const auto manager = this->manager();
  EXPECT_EQ(titles(*manager).size(), 3U);
  EXPECT_EQ(runSQL(file(), "PRAGMA user_version"), std::vector{std::to_string(Store::schemaVersion)});
  EXPECT_EQ(bytesOf(home() / "Habitra-Production.sqlite"), before);
  addTask(*manager, "Read");
  EXPECT_EQ(titles(*this->manager()).size(), 4U) << "it was taken over twice";
  EXPECT_FALSE(manager->isMigrating());
}

TEST_F(DataManagerTest, AnEarlyStoreIsNotLostSightOf) {
  for (const bool isSwitch : {true, false}) {
    std::filesystem::remove_all(home());
    std::filesystem::create_directories(home());
    std::filesystem::permissions(home(), std::filesystem::perms::owner_all);
    std::filesystem::copy_file(DATA_FOLDER "/version-1.sqlite", home() / "Habitra-Production.sqlite");
    const auto manager = this->manager();
    if (isSwitch) {
      manager->switchStorage("private");
      EXPECT_EQ(titles(*manager).size(), 3U);
    } else {
      makeOtherStore(folder_ / "other.sqlite");
      manager->restoreStore(folder_ / "other.sqlite");
      EXPECT_EQ(titles(*manager), std::vector<std::string>{"Other"});
      EXPECT_GE(backups(), 1) << "the habits of before are gone";
    }
  }
}

TEST_F(DataManagerTest, OtherThreadsWaitForMaintenance) {
  const auto manager = std::make_unique<DataManager>(DataManager::storeLocation(home()), clock_);
  addTask(*manager, "Walk");
  std::atomic<bool> isOver = false;
  std::thread other;
  manager->performMaintenance([&] {
    other = std::thread([&] {
      const auto context = manager->context();
      EXPECT_TRUE(isOver) << "a store was opened during maintenance";
    });
    EXPECT_NO_THROW(manager->restoreStore(copyOf(file(), folder_ / "copy.sqlite")));
    isOver = true;
  });
  other.join();
}

TEST_F(DataManagerTest, ContainersMayOutliveIt) {
  std::filesystem::create_directories(home());
  std::filesystem::permissions(home(), std::filesystem::perms::owner_all);
  std::filesystem::copy_file(DATA_FOLDER "/version-1.sqlite", file());
  std::shared_ptr<DataManager::Container> kept;
  {
    const auto manager = this->manager();
    manager->setupImportObserver();
    kept = manager->localPersistentContainer();
  }
  EXPECT_EQ(kept->newReadingContext()->fetchAll<TaskEntity>().size(), 3U) << "it brings its store up to date";
}

TEST_F(DataManagerTest, AHandlerThatFailsSpoilsNothing) {
  const auto manager = this->manager();
  addTask(*manager, "Walk");
  const auto fail = [] { throw qz::Error("a handler fails"); };
  const auto first = manager->notifications().addObserver(DataManager::maintenanceDidFinish, fail);
  const auto second = manager->notifications().addObserver(DataManager::syncEventsUpdated, fail);
  manager->switchStorage("private");
  EXPECT_TRUE(manager->isCloudSyncOn());
  EXPECT_EQ(manager->cloudPersistentContainer()->location().cloudContainer(), std::nullopt) << "before it is opened";
  EXPECT_EQ(titles(*manager), std::vector<std::string>{"Walk"});
  EXPECT_EQ(manager->cloudPersistentContainer()->location().cloudContainer(), "private");
  manager->setupImportObserver();
  manager->cloudPersistentContainer()->post({.identifier = qz::UniqueID::generate(testMoment),
                                             .type = SyncEvent::Type::importing,
                                             .startDate = testMoment,
                                             .endDate = testMoment + 1s});
  manager->cloudSync().drain();
  EXPECT_TRUE(manager->cloudSync().activeSyncEvents().empty());
}

TEST_F(DataManagerTest, RestoringPutsAnotherStoreInThePlace) {
  const auto manager = this->manager();
  addTask(*manager, "Walk");
  const auto copy = folder_ / "copy.sqlite";
  copyStore(file(), copy);
  addTask(*manager, "Read");
  std::ofstream(folder_ / "bad.sqlite") << "this is no store";
  for (const std::filesystem::path& bad : {folder_ / "bad.sqlite", std::filesystem::path()})
    EXPECT_THROW(manager->restoreStore(bad), StoreError);
  EXPECT_EQ(titles(*manager), (std::vector<std::string>{"Walk", "Read"}));
  manager->restoreStore(copy);
  EXPECT_EQ(titles(*manager), std::vector<std::string>{"Walk"});
  EXPECT_EQ(backups(), 1) << "what was replaced is kept";
}

TEST_F(DataManagerTest, EventsOfTheMirroringAreKeptWhileTheyLast) {
  const auto manager = this->manager();
  manager->setupImportObserver();
  manager->setupImportObserver();  // once is enough
  Counter updated(*manager, DataManager::syncEventsUpdated);
  auto& cloud = *manager->cloudPersistentContainer();
  SyncEvent event{
      .identifier = qz::UniqueID::generate(testMoment), .type = SyncEvent::Type::exporting, .startDate = testMoment};
  cloud.post(event);
  manager->cloudSync().drain();
  EXPECT_EQ(manager->cloudSync().activeSyncEvents(), std::set{CloudSync::ActiveSyncEvent::exporting});
  EXPECT_EQ(manager->cloudSync().currentSyncEvents().at(event.identifier), event);
  EXPECT_EQ(updated.count, 1);
  event.endDate = testMoment + 1s;
  event.error = "the cloud is full";
  cloud.post(event);
  manager->cloudSync().drain();
  EXPECT_TRUE(manager->cloudSync().activeSyncEvents().empty());
  EXPECT_EQ(manager->cloudSync().currentSyncError(), "the cloud is full");
  EXPECT_EQ(manager->cloudSync().currentSyncErrorDate(), testMoment + 1s);
  event.error.reset();
  cloud.post(event);
  manager->cloudSync().drain();
  EXPECT_EQ(manager->cloudSync().currentSyncError(), std::nullopt);
  EXPECT_TRUE(manager->cloudSync().hasCapturedCKError());
}

TEST_F(DataManagerTest, AnImportIsSearchedForDoubles) {
  const auto manager = this->manager();
  manager->setupImportObserver();
  {
    const auto context = manager->context();
    TaskEntity task = titled("Walk");
    task.uniqueId = "0190A1B2-0000-7000-8000-000000000001";
    context->insert(task);
    context->insert(task);
    context->save({});
  }
  std::vector<std::size_t> atEachPost;
  const auto observation = manager->notifications().addObserver(DataManager::syncEventsUpdated, [&] {
    atEachPost.push_back(manager->cloudSync().currentImportDeduplicationEvents().size());
  });
  manager->cloudPersistentContainer()->post({.identifier = qz::UniqueID::generate(testMoment),
                                             .type = SyncEvent::Type::importing,
                                             .startDate = testMoment,
                                             .endDate = testMoment + 1s});
  manager->cloudSync().drain();
  EXPECT_TRUE(manager->cloudSync().activeSyncEvents().empty());
  EXPECT_EQ(atEachPost, (std::vector<std::size_t>{1, 0})) << "before and after the search";
  EXPECT_EQ(titles(*manager), std::vector<std::string>{"Walk"});
  EXPECT_EQ(manager->deduplicate(), 0);
}

/// An account that the test changes.
class ScriptedCloud final : public CloudContainer {
 public:
  [[nodiscard]] std::string identifier() const override { return "private"; }
  [[nodiscard]] CloudAccountStatus accountStatus() override {
    if (!status) throw qz::Error("no network");
    return *status;
  }
  [[nodiscard]] std::shared_ptr<void> observeAccount(std::function<void()> changed) override {
    auto token = std::make_shared<std::function<void()>>(std::move(changed));
    observer = token;
    return token;
  }
  void change(std::optional<CloudAccountStatus> to) {
    status = to;
    if (const auto changed = observer.lock()) (*changed)();
  }

  std::optional<CloudAccountStatus> status = CloudAccountStatus::available;
  std::weak_ptr<std::function<void()>> observer;
};

TEST_F(DataManagerTest, TheAccountIsFollowed) {
  const auto manager = this->manager();
  const auto cloud = std::make_shared<ScriptedCloud>();
  EXPECT_EQ(manager->cloudSync().ckStatus(), CloudAccountStatus::couldNotDetermine);
  manager->cloudSync().setCloudContainer(cloud);
  manager->cloudSync().drain();
  EXPECT_EQ(manager->cloudSync().ckStatus(), CloudAccountStatus::available);
  cloud->change(CloudAccountStatus::noAccount);
  manager->cloudSync().drain();
  EXPECT_EQ(manager->cloudSync().ckStatus(), CloudAccountStatus::noAccount);
  cloud->change(std::nullopt);
  manager->cloudSync().drain();
  EXPECT_EQ(manager->cloudSync().ckStatus(), CloudAccountStatus::couldNotDetermine);
  manager->cloudSync().setCloudContainer(nullptr);
  EXPECT_TRUE(cloud->observer.expired());
}

TEST_F(DataManagerTest, AContainerIsSetUpForALocation) {
  const auto manager = this->manager();
  auto& container = *manager->cloudPersistentContainer();
  std::exception_ptr failure;
  const auto complete = [&failure](std::exception_ptr what) { failure = std::move(what); };
  manager->configureStoreDescription(container, ContainerLocation::inMemory(), complete);
  EXPECT_EQ(failure, nullptr);
  EXPECT_TRUE(container.store()->isInMemory());
  std::filesystem::create_directories(home() / "folder.sqlite");
  manager->configureStoreDescription(container, ContainerLocation::url(home() / "folder.sqlite", "private"), complete);
  EXPECT_NE(failure, nullptr);
  EXPECT_FALSE(container.isOpen());
}

}  // namespace
}  // namespace habitra
