#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <QZKit/Error.h>
#include <Support/ChildProcess.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <csignal>
#include <fstream>
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

TEST(ImportTests, whatIsExportedIsUpToDate) {
  const TemporaryFolder folder;
  const auto applicationOn = [&](int day) {
    const qz::Moment noon = std::chrono::sys_days(std::chrono::January / day / 2024) + std::chrono::hours(12);
    return habitra::Application(
        {.home = folder / "home", .clock = std::make_shared<qz::FixedClock>(noon), .timeZone = qz::TimeZone::utc()});
  };
  std::istringstream history("title,entry_type,entry_date\nRead,completed_manually,20240120\n");
  applicationOn(20).importHistory(history, "history.csv");
  std::ostringstream rows;
  EXPECT_EQ(applicationOn(23).exportHistory(rows, {}).rows, 3U) << rows.str();
}

TEST(ImportTests, killedAtAnyPointLeavesWhatWasThereOrAllOfIt) {
  std::string text = "title,entry_type,entry_date\n";
  for (int habit = 0; habit < 6; ++habit)
    for (int day = 1; day <= 25; ++day)
      text += "Habit " + std::to_string(habit) + ",completed_manually," + std::to_string(20231200 + day) + "\n";
  const auto clock =
      std::make_shared<qz::FixedClock>(qz::Moment(std::chrono::sys_days(std::chrono::January / 31 / 2024)));
  std::size_t untouched = 0;
  for (int steps = 1;; ++steps) {
    const TemporaryFolder folder;
    const auto file = folder / "history.csv";
    std::ofstream(file) << text;
    const habitra::ApplicationSettings settings{
        .home = folder / "home", .clock = clock, .timeZone = qz::TimeZone::utc(), .timeIsGiven = true};
    habitra::Application(settings).add("Read");
    ChildProcess child([&](const ChildProcess::Talk&) {
      habitra::Application application(settings);
      application.setProgress([left = steps](std::string_view, double) mutable {
        if (--left == 0) ::raise(SIGKILL);
      });
      application.importHistory(file);
    });
    const bool hasEnded = child.end();
    const std::size_t habits = habitra::Application(settings).list().size();
    EXPECT_EQ(habits, hasEnded ? 7U : 1U) << "after " << steps << " steps";
    if (hasEnded) break;
    ++untouched;
    // Whoever tries again gets all of it.
    habitra::Application again(settings);
    EXPECT_EQ(again.importHistory(file).report.entries().added, 150U);
    ASSERT_LT(steps, 50);
  }
  EXPECT_GE(untouched, 6U) << "it was never killed while it stored";
}

}  // namespace
