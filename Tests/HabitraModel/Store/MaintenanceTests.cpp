#include <HabitraModel/Store/Files/MaintenanceLock.h>
#include <Support/ChildProcess.h>

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <list>
#include <thread>

#include "StoreFixture.h"

namespace habitra {
namespace {

using namespace std::chrono_literals;

class MaintenanceTest : public StoreTest {
 protected:
  [[nodiscard]] std::filesystem::path home() const { return file().parent_path(); }
  [[nodiscard]] std::filesystem::path lockFile() const { return home() / MaintenanceLock::fileName; }

  template <typename Step>
  static std::string message(Step&& step) {
    try {
      step();
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), StoreError::Kind::busy) << error.what();
      return error.what();
    }
    return {};
  }
};

TEST_F(MaintenanceTest, OpenStoresAreNamedAndWaitedFor) {
  makeTask();
  std::list<ChildProcess> readers;
  for (int i = 0; i < 8; ++i) {
    readers.emplace_back([&](const ChildProcess::Talk& talk) {
      const auto store = i % 2 == 0 ? openStore() : Store::openForReading(file(), clock_);
      talk.tell();
      talk.wait();
    });
    ASSERT_TRUE(readers.back().talk().wait());
  }
  const std::string busy = message([&] { MaintenanceLock(home(), 0ms).takeExclusive(); });
  for (const ChildProcess& reader : readers) {
    std::string name;
    std::getline(std::ifstream(fmt::format("/proc/{}/comm", reader.id())), name);
    EXPECT_NE(busy.find(fmt::format("{} (process {})", name, reader.id())), std::string::npos) << busy;
  }
  EXPECT_NE(busy.find(home()), std::string::npos);
  EXPECT_EQ(std::count(busy.begin(), busy.end(), '\n'), 0);

  std::thread ending([&readers] {
    for (ChildProcess& reader : readers) reader.talk().tell();
  });
  MaintenanceLock maintenance(home(), 1h);
  maintenance.takeExclusive();
  ending.join();
  for (ChildProcess& reader : readers) EXPECT_TRUE(reader.end());
  EXPECT_NE(message([&] { MaintenanceLock(home(), 0ms).takeShared(); }).find("this program itself"), std::string::npos);
}

TEST_F(MaintenanceTest, OpeningWaitsForItsEndOrItsDeath) {
  makeTask();
  ChildProcess maintainer([&](const ChildProcess::Talk& talk) {
    MaintenanceLock maintenance(home(), 1h);
    maintenance.takeExclusive();
    talk.tell();
    talk.wait();
  });
  ASSERT_TRUE(maintainer.talk().wait());
  const std::string busy = message([&] { MaintenanceLock(home(), 0ms).takeShared(); });
  EXPECT_NE(busy.find(fmt::format("(process {})", maintainer.id())), std::string::npos) << busy;
  std::thread crash([&maintainer] { maintainer.kill(); });
  EXPECT_EQ(open()->fetchAll<TaskEntity>().size(), 1U);
  crash.join();
}

TEST_F(MaintenanceTest, WhoOpensWaitsForWhoWaits) {
  makeTask();
  MaintenanceLock reader(home());
  reader.takeShared();
  std::atomic<bool> hasEnded = false;
  std::thread maintainer([&] {
    MaintenanceLock maintenance(home(), 10s);
    EXPECT_NO_THROW(maintenance.takeExclusive());
    hasEnded = true;
  });
  std::string busy;
  while (busy.empty() && !hasEnded) busy = message([&] { MaintenanceLock(home(), 0ms).takeShared(); });
  EXPECT_NE(busy.find("is waiting for this program itself"), std::string::npos) << busy;
  reader.release();
  maintainer.join();
  reader.takeShared();
}

TEST_F(MaintenanceTest, AStoreHoldsItToItsEndAndInMemoryNone) {
  makeTask();
  MaintenanceLock maintenance(home(), 0ms);
  const auto inMemory = Store::inMemory(clock_);
  maintenance.takeExclusive();
  maintenance.release();
  {
    auto store = openStore();
    const StoreContext context(std::move(store));
    EXPECT_FALSE(message([&] { maintenance.takeExclusive(); }).empty()) << "a context keeps its store open";
  }
  maintenance.takeExclusive();
}

TEST_F(MaintenanceTest, TheFileIsTheOwnersAndNoLink) {
  makeTask();
  struct stat status {};
  ASSERT_EQ(::stat(lockFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  std::filesystem::remove(lockFile());
  std::filesystem::create_symlink(folder_ / "elsewhere", lockFile());
  EXPECT_EQ(errorKind([&] { (void)openStore(); }), StoreError::Kind::insecurePath);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "elsewhere"));
}

}  // namespace
}  // namespace habitra
