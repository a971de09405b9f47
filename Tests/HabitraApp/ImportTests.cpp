#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <QZKit/Error.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <memory>
#include <sstream>

namespace {

/// A clock that fails after it was read so many times.
class FailingClock final : public qz::Clock {
 public:
  [[nodiscard]] qz::Moment now() const override {
    if (readings == 0) throw qz::Error("the clock has stopped");
    --readings;
    return qz::Moment(std::chrono::sys_days(std::chrono::January / 31 / 2024));
  }
  mutable int readings = 1000;
};

TEST(ImportTests, succeedsExactlyWhenItIsStored) {
  bool passFailed = false;
  for (int readings = 0;; ++readings) {
    const TemporaryFolder folder;
    const auto clock = std::make_shared<FailingClock>();
    habitra::Application application({.home = folder / "home", .clock = clock, .timeZone = qz::TimeZone::utc()});
    std::istringstream history("title,entry_type,entry_date\nRead,completed_manually,20240120\n");
    bool isDone = false;
    bool isProcessed = false;
    clock->readings = readings;
    try {
      const habitra::ImportOutcome outcome = application.importHistory(history, "history.csv");
      isDone = true;
      isProcessed = outcome.processed.has_value();
      EXPECT_EQ(outcome.report.tasks.size(), 1u);
    } catch (const qz::Error&) {
    }
    clock->readings = 1000;
    EXPECT_EQ(application.list().size(), isDone ? 1u : 0u) << "the clock fails after " << readings;
    passFailed |= isDone && !isProcessed;
    if (isProcessed) break;
    ASSERT_LT(readings, 100);
  }
  EXPECT_TRUE(passFailed) << "no reading of the clock belonged to the pass alone";
}

}  // namespace
