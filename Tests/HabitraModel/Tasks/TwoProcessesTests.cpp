#include <HabitraModel/Store/StoreVerification.h>
#include <Support/ChildProcess.h>
#include <Support/TemporaryFolder.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Mode = TaskFrequency::DayMode;
using Type = TaskLogEntryType;
using qz::YYYYMMDD;

constexpr YYYYMMDD firstDay(2024, 1, 1);
constexpr int habits = 4;

/// The days that are lived through. HABITRA_DAYS in the environment asks for more: 1200 take about a minute.
int daysToLive() {
  const char* days = std::getenv("HABITRA_DAYS");
  return days != nullptr ? std::atoi(days) : 25;
}

/// A program on the store of a home.
class Program : TestProgram {
 public:
  explicit Program(const std::filesystem::path& home) : TestProgram(noon(firstDay), DataManager::storeLocation(home)) {}

  void goTo(int day) { clock_->set(noon(firstDay.add(day))); }
  void addHabits() {
    const std::array<TaskFrequency, habits> frequencies{TaskFrequency::everyDay(),
                                                        {.dayMode = Mode::numberOfDaysInWeek, .numCompletions = 4},
                                                        {.dayMode = Mode::dayInterval, .dayInterval = 3},
                                                        {.dayMode = Mode::numberOfDaysInWeek, .numCompletions = 5}};
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
      TaskEntity task = newlyMadeTask(fmt::format("Habit {}", i), qz::DayOfWeek::monday, clock_->now(), "UTC");
      setFrequency(task, frequencies.at(i));
      task.isNegative = i == 3;
      context_->insert(task);
    }
    context_->save({});
  }
  /// Records every third day of each habit, on the day after, while that day is filled in, and once more a day later.
  void record(int today) {
    for (int habit = 0; habit < habits; ++habit) {
      const int daysBack = (today + habit) % 3;
      const int day = today - daysBack;
      if (daysBack == 0 || day < 0) continue;
      context_->refresh();
      TaskEntity& task = this->task(habit);
      const qz::Moment moment = noon(firstDay.add(day));
      recorder_.recordNow(
          task, {.managedObjectContext = *context_,
                 .context = TaskModifyContext::userInitiatedFromMainApp,
                 .logEntries = {{.uniqueId = qz::UniqueID::generate(clock_->now()),
                                 .type = task.isNegative ? Type::missedManuallyFull : Type::completedManuallyFull,
                                 .period = DatedPeriod(firstDay.add(day), TaskFrequencyPeriodType::day,
                                                       qz::DayOfWeek::monday),
                                 .startDate = moment,
                                 .endDate = moment}},
                 .createdTimestamp = clock_->now(),
                 .createdTimeZone = qz::TimeZone::utc()});
    }
  }
  void process() {
    context_->refresh();
    processor_.processAllTasks(*context_, clock_->now());
  }
  std::vector<std::string> logs() {
    context_->refresh();
    std::vector<std::string> lines;
    for (int habit = 0; habit < habits; ++habit)
      for (const auto& row : context_->fetchLogEntries(task(habit).objectID))
        lines.push_back(
            fmt::format("{} {} {}", habit, row.entryDate, caseName(fromRawValue<Type>(row.entryType).value())));
    return lines;
  }
  StoreContext& context() { return *context_; }

 private:
  static qz::Moment noon(const YYYYMMDD& day) {
    return day.beginning(qz::HHMMSS::midnight, qz::TimeZone::utc()) + std::chrono::hours(12);
  }
  TaskEntity& task(int habit) { return *context_->find<TaskEntity>("title", fmt::format("Habit {}", habit)); }
};

/// One records while the other processes, day by day: nothing is lost, nothing filled in twice, and no automatic entry
/// stands beside a full one, since the log is that of one program which did both in turn.
TEST(TwoProcesses, LeaveTheLogThatOneWould) {
  const TemporaryFolder folder;
  const int days = daysToLive();
  Program(folder / "together").addHabits();
  ChildProcess recording([&](const ChildProcess::Talk& talk) {
    Program program(folder / "together");
    for (int day = 0; day < days && talk.wait(); ++day) {
      program.goTo(day);
      program.record(day);
      talk.tell();
    }
  });
  Program processing(folder / "together");
  for (int day = 0; day < days; ++day) {
    processing.goTo(day);
    recording.talk().tell();
    for (int pass = 0; pass < 3; ++pass) processing.process();
    ASSERT_TRUE(recording.talk().wait()) << "on day " << day;
  }
  ASSERT_TRUE(recording.end());
  processing.process();

  Program alone(folder / "alone");
  alone.addHabits();
  for (int day = 0; day < days; ++day) {
    alone.goTo(day);
    alone.record(day);
    alone.process();
  }
  EXPECT_EQ(processing.logs(), alone.logs());
  EXPECT_TRUE(StoreVerification::verifyChecksums(processing.context()).empty());
}

}  // namespace
}  // namespace habitra
