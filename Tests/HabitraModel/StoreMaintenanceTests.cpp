#include <HabitraModel/DataManager.h>

#include <future>
#include <semaphore>

#include "Store/MigrationFixture.h"

namespace habitra {
namespace {

using namespace std::chrono_literals;

class StoreMaintenanceTest : public MigrationTest {
 protected:
  void observe() {
    manager_.observeChanges(
        Author::widget, [](const PersistentHistoryTransaction&) {},
        [this](const PersistentHistoryObserver::Changes& changes) {
          (changes.everythingChanged ? begun_ : changed_).release();
        });
    EXPECT_TRUE(begun_.try_acquire_for(10s));
  }
  /// What another program changes arrives, once the observer has looked at the store that is there now.
  void expectObservation() {
    EXPECT_TRUE(begun_.try_acquire_for(10s));
    {
      DataManager other(DataManager::storeLocation(home()), clock_);
      const auto context = other.context();
      context->insert(titled("New"));
      context->save({});
    }
    EXPECT_TRUE(changed_.try_acquire_for(10s));
  }

  DataManager manager_{DataManager::storeLocation(home()), clock_, 20ms};
  std::counting_semaphore<> begun_{0};
  std::counting_semaphore<> changed_{0};
};

TEST_F(StoreMaintenanceTest, AnOlderStoreMayTakeThePlaceOfAnObservedOne) {
  makeTask();
  observe();
  const auto old = folder_ / "old.sqlite";
  putOldStore(old);
  manager_.restoreStore(old);
  EXPECT_EQ(version(old), "1");
  EXPECT_EQ(version(file()), std::to_string(Store::schemaVersion)) << "it comes up to date";
  expectObservation();
  manager_.performMaintenance([&] {  // what a person does by hand
    for (const char* suffix : {"-wal", "-shm"}) std::filesystem::remove(file().string() + suffix);
    putOldStore(file());
  });
  EXPECT_EQ(version(file()), std::to_string(Store::schemaVersion));
  expectObservation();
  manager_.performMaintenance([&] {
    for (const char* suffix : {"-wal", "-shm"}) std::filesystem::remove(file().string() + suffix);
    putOldStore(file());
    runSQL(file(), "DROP TABLE TaskLogEntryEntity");
  });
  EXPECT_FALSE(manager_.isInMaintenanceMode()) << "what cannot be brought up to date ends it all the same";
  EXPECT_THROW((void)manager_.context(), StoreError);
}

TEST_F(StoreMaintenanceTest, ObservationGoesOnAfterASwitchInAStoreThatKnowsItsCloud) {
  makeTask();
  observe();
  manager_.switchStorage("private");
  EXPECT_TRUE(manager_.cloudPersistentContainer()->isOpen());
  EXPECT_EQ(manager_.cloudPersistentContainer()->location().cloudContainer(), "private");
  expectObservation();
}

TEST_F(StoreMaintenanceTest, ASwitchThatFailsLeavesNoTrace) {
  makeTask();
  runSQL(file(), "UPDATE TaskEntity SET title='forged'");
  EXPECT_EQ(errorKind([this] { manager_.switchStorage("private"); }), StoreError::Kind::damaged);
  EXPECT_FALSE(manager_.isCloudSyncOn());
  EXPECT_TRUE(manager_.sharedDefaults().keys().empty());
  EXPECT_FALSE(std::filesystem::exists(home() / "Habitra-CloudKit.sqlite"));
  EXPECT_EQ(manager_.contextForReading()->fetchAll<TaskEntity>().size(), 1U);
}

TEST_F(StoreMaintenanceTest, WhoIsToldOfItsEndMayWaitForOthers) {
  putOldStore(file());
  int told = 0;
  const auto observation = manager_.notifications().addObserver(DataManager::maintenanceDidFinish, [&] {
    ++told;
    EXPECT_NO_THROW((void)std::async(std::launch::async, [this] { return manager_.context(); }).get());
  });
  EXPECT_EQ(manager_.context()->fetchAll<TaskEntity>().size(), 3U);
  EXPECT_EQ(told, 1);
  manager_.performMaintenance([] {});
  EXPECT_EQ(told, 2);
}

TEST_F(StoreMaintenanceTest, OtherThreadsWaitForItsEndAndSayWhenTheirPatienceIsOver) {
  makeTask();
  const auto openElsewhere = [this] { return std::async(std::launch::async, [this] { (void)manager_.context(); }); };
  manager_.performMaintenance([&] {
    (void)manager_.context();  // the thread that maintains has its turn
    manager_.performMaintenance([] {});
    EXPECT_EQ(errorKind([&] { openElsewhere().get(); }), StoreError::Kind::busy);
  });
  EXPECT_NO_THROW(openElsewhere().get());
}

}  // namespace
}  // namespace habitra
