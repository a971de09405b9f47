#include <HabitraModel/Store/Files/StoreChangeWatcher.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <fstream>
#include <functional>
#include <iterator>
#include <mutex>

#include "StoreFixture.h"

namespace habitra {
namespace {

/// Counts calls, and waits for them without a limit of its own: a call that does not come fails by the runner's.
class Calls {
 public:
  void add() {
    const std::scoped_lock lock(mutex_);
    ++count_;
    changed_.notify_all();
  }
  [[nodiscard]] int count() {
    const std::scoped_lock lock(mutex_);
    return count_;
  }
  void waitForMoreThan(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return count_ > count; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int count_ = 0;
};

/// Another process that takes a step whenever it is told to. Made before any thread: a process that is copied from
/// several threads may do little.
class OtherProcess {
 public:
  explicit OtherProcess(const std::function<void()>& step) {
    if (::pipe(orders_.data()) != 0 || ::pipe(answers_.data()) != 0) throw std::runtime_error("no pipe");
    child_ = ::fork();
    if (child_ != 0) return;
    ::close(orders_[1]);
    for (char order = 0; ::read(orders_[0], &order, 1) == 1;) {
      step();
      if (::write(answers_[1], &order, 1) != 1) break;
    }
    ::_exit(0);
  }
  ~OtherProcess() {
    ::close(orders_[1]);
    ::waitpid(child_, nullptr, 0);
    for (const int end : {orders_[0], answers_[0], answers_[1]}) ::close(end);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  /// Waits until the step is taken.
  void step() const {
    char order = 1;
    ASSERT_EQ(::write(orders_[1], &order, 1), 1);
    ASSERT_EQ(::read(answers_[0], &order, 1), 1);
  }

 private:
  std::array<int, 2> orders_{};
  std::array<int, 2> answers_{};
  pid_t child_ = 0;
};

class StoreChangeTest : public StoreTest {
 protected:
  [[nodiscard]] std::filesystem::path signal() const { return file().parent_path() / "Habitra.changed"; }
  [[nodiscard]] std::string signalText() const {
    std::ifstream stream(signal());
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  static void save(StoreContext& context) {
    context.insert(titled("Walk"));
    context.save({});
  }
  Calls calls_;
};

TEST_F(StoreChangeTest, TheFileHoldsTheNewestSequenceOnly) {
  const mode_t mask = ::umask(0);
  const auto context = open();
  EXPECT_FALSE(std::filesystem::exists(signal())) << "nobody has written";
  save(*context);
  ::umask(mask);
  EXPECT_EQ(signalText(), "1                  \n");
  struct stat status {};
  ASSERT_EQ(::stat(signal().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);

  runSQL(file(), "UPDATE habitra_meta SET newestSequence=998");
  save(*context);
  save(*context);
  EXPECT_EQ(signalText(), "1000               \n");
  runSQL(file(), "UPDATE habitra_meta SET newestSequence=6");
  save(*context);
  EXPECT_EQ(signalText(), "7                  \n") << "no digits of a longer number remain";
  context->save({});
  context->beginUnit();
  context->rollback();
  EXPECT_EQ(signalText(), "7                  \n") << "nothing was committed";
}

TEST_F(StoreChangeTest, ASignalThatCannotBeGivenFailsNoSave) {
  const auto elsewhere = folder_ / "elsewhere";
  std::ofstream(elsewhere) << "untouched";
  const auto context = open();
  std::filesystem::create_symlink(elsewhere, signal());
  save(*context);
  save(*context);
  EXPECT_EQ(open()->sequence(), 2);
  std::filesystem::remove(signal());
  save(*context);
  EXPECT_EQ(signalText(), "3                  \n") << "a failure is no reason to stay silent";
  std::ifstream stream(elsewhere);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "untouched") << "no link is followed";
}

TEST_F(StoreChangeTest, AWatcherIsCalledForWhatOtherProcessesSave) {
  makeTask();
  std::filesystem::remove(signal());
  std::unique_ptr<StoreContext> ofOther;
  const OtherProcess other([&] {
    if (ofOther == nullptr) ofOther = open();
    save(*ofOther);
  });
  const auto store = openStore();
  StoreContext reader(store);
  std::atomic<std::int64_t> seen = 0;
  const StoreChangeWatcher watcher(*store, [&] {
    reader.refresh();
    seen = reader.sequence();
    calls_.add();
    if (seen == 3) throw std::runtime_error("a callback that fails is called again");
  });
  // The file comes to be, is written, goes away, comes again: each time by another process.
  for (std::int64_t expected = 2; expected < 6; ++expected) {
    if (expected == 4) std::filesystem::remove(signal());
    const int before = calls_.count();
    other.step();
    calls_.waitForMoreThan(before);
    for (int calls = calls_.count(); seen < expected; calls = calls_.count()) calls_.waitForMoreThan(calls);
    EXPECT_EQ(seen, expected);
  }
}

TEST_F(StoreChangeTest, AWriterThatDiesBeforeItTellsWakesTheWatcher) {
  makeTask();
  const StoreChangeWatcher watcher(*openStore(), [this] { calls_.add(); });
  ::close(::open(signal().c_str(), O_WRONLY | O_CLOEXEC));
  calls_.waitForMoreThan(0);
}

TEST_F(StoreChangeTest, AHomeThatGoesAwayAndComesAgainIsWatchedAgain) {
  makeTask();
  const StoreChangeWatcher watcher(*openStore(), [this] { calls_.add(); });
  MaintenanceLock(file().parent_path()).takeExclusive();  // the watcher keeps no store open
  std::filesystem::remove_all(file().parent_path());
  const auto context = open();
  for (int i = 0; i < 2; ++i) {
    const int before = calls_.count();
    save(*context);
    calls_.waitForMoreThan(before);
  }
}

TEST_F(StoreChangeTest, AHomeThatMayNotBeWrittenCanBeWatched) {
  makeTask();
  const auto home = file().parent_path();
  const auto writer = open();
  save(*writer);
  std::filesystem::permissions(home, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  {
    const StoreChangeWatcher watcher(*Store::openForReading(file(), clock_), [this] { calls_.add(); });
    save(*writer);
    calls_.waitForMoreThan(0);
  }
  std::filesystem::permissions(home, std::filesystem::perms::owner_all);
  EXPECT_EQ(open()->sequence(), 3);
}

TEST_F(StoreChangeTest, ContextsInMemoryTellEachOther) {
  const auto store = Store::inMemory(clock_);
  StoreContext context(store);
  StoreContext reader(store);
  {
    const StoreChangeWatcher watcher(*store, [&] {
      EXPECT_EQ(reader.sequence(), 1);
      calls_.add();
    });
    save(context);
    calls_.waitForMoreThan(0);
  }
  const int calls = calls_.count();
  save(context);
  EXPECT_EQ(calls_.count(), calls) << "a watcher that is gone is not called";
}

}  // namespace
}  // namespace habitra
