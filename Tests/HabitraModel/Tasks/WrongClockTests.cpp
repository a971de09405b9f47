#include <algorithm>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using qz::YYYYMMDD;

/// A computer whose clock jumps to another age, where passes run and something is recorded, and back.
class WrongClock : public TaskWorld, public testing::WithParamInterface<const char*> {
 protected:
  void recordToday(TaskEntity& task, Type type) {
    const YYYYMMDD today = calendars_.of(task).day(clock_->now());
    ASSERT_EQ(messageOf(record(task, type, today)), "");
  }
  /// What persons recorded.
  std::vector<std::string> recorded(const TaskEntity& task) {
    std::vector<std::string> lines = log(task);
    std::erase_if(lines, [](const std::string& line) { return line.find("Automatically") != std::string::npos; });
    return lines;
  }
  /// What a list shows.
  TaskFigures shown(const TaskEntity& task) {
    return assess(*context_, task, calendars_, clock_->now()).history->figures;
  }
};

TEST_P(WrongClock, LosesNothing) {
  TaskEntity& task = addTask();
  recordToday(task, Type::completedManuallyFull);
  process();
  clock_->set(at("2024-02-01T12:00:00Z"));
  recordToday(task, Type::completedManuallyFull);

  clock_->set(at(GetParam()));
  process();
  recordToday(task, Type::skippedManuallyFull);
  process();

  for (int day = 2; day <= 3; ++day) {
    clock_->set(at("2024-02-01T12:00:00Z") + std::chrono::days(day - 1));
    const std::vector<std::string> before = recorded(task);
    process();
    EXPECT_EQ(recorded(task), before);
    EXPECT_EQ(shown(task).streak.current, day) << "nobody can have missed a day that is not over";
    recordToday(task, Type::completedManuallyFull);
    EXPECT_EQ(shown(task).streak.current, day + 1) << "as if the clock had never been wrong";
    EXPECT_EQ(recorded(task).size(), before.size() + 1);
  }
}

INSTANTIATE_TEST_SUITE_P(, WrongClock, testing::Values("1970-01-01T12:00:00Z", "2038-01-19T12:00:00Z"),
                         [](const auto& moment) { return "In" + std::string(moment.param).substr(0, 4); });

}  // namespace
}  // namespace habitra
