#include <HabitraApp/Rooms.h>

#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <exception>
#include <tuple>
#include <utility>

namespace habitra {

Application::Application(ApplicationSettings settings) : rooms_(std::make_unique<Rooms>(settings)) {}

Application::~Application() = default;

qz::YYYYMMDD Application::today() {
  // The store knows when the day begins.
  if (rooms_->readingContext() == nullptr) rooms_->followTimeZone();
  return rooms_->calendars.ofDevice().day(rooms_->now());
}

std::vector<HabitSummary> Application::list() {
  StoreContext* context = rooms_->readingContext();
  if (context == nullptr) return {};
  struct Place {
    std::int64_t page;
    std::int16_t displayOrder;
    std::size_t creation;
    auto operator<=>(const Place&) const = default;
  };
  std::vector<std::pair<Place, HabitSummary>> placed;
  for (const TaskEntity* task : TaskProcessor::activeTasks(*context)) {
    HabitSummary habit = rooms_->summarize(*context, *task);
    placed.emplace_back(Place{habit.page, task->displayOrder, placed.size()}, std::move(habit));
  }
  std::sort(placed.begin(), placed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<HabitSummary> habits;
  habits.reserve(placed.size());
  for (auto& [place, habit] : placed) habits.push_back(std::move(habit));
  return habits;
}

ProcessReport processReport(const TaskProcessorReport& report) {
  ProcessReport processed{
      .tasks = report.tasks, .changed = report.changed, .filledIn = report.filledIn, .removed = report.removed};
  try {
    if (report.failure) std::rethrow_exception(report.failure);
  } catch (const std::exception& error) {
    processed.failure = error.what();
  }
  return processed;
}

ProcessReport Application::process() {
  StoreContext* context = rooms_->readingContext();
  if (context == nullptr) return {};
  const TaskProcessorReport report = rooms_->pass();
  rooms_->trimHistory(*context);
  if (report.failure) std::rethrow_exception(report.failure);
  return processReport(report);
}

void Application::processIfDue() noexcept {
  try {
    StoreContext* context = rooms_->readingContext();
    if (context == nullptr || context->store().isReadOnly()) return;
    rooms_->processor.runDueBackgroundTasks(rooms_->now());
    if (rooms_->processor.isDue(*context, rooms_->now())) (void)rooms_->pass();
    // When a person has marked all habits today, no pass is due, yet history grows.
    rooms_->trimHistory(*context);
  } catch (const std::exception& error) {
    qz::log::warning("The pass after the answer could not be made: {}", error.what());
  }
}

void Application::afterAnswer() noexcept {
  try {
    StoreContext* context = rooms_->readingContext();
    if (context == nullptr || context->store().isReadOnly()) return;
    rooms_->processor.processPendingHealthKitRequests(*context);
    // Panels show the day that is.
    if (!rooms_->timeIsGiven() && rooms_->widgets.isOutdated(rooms_->lastRead(), today())) writeSnapshot();
  } catch (const std::exception& error) {
    qz::log::warning("Something was left to do after the answer: {}", error.what());
  }
  rooms_->backUp();
}

std::optional<ProcessReport> Application::processAfter(std::string_view what) {
  try {
    return process();
  } catch (const qz::Error& error) {
    // It is stored; whoever were told of a failure would do it again. The next pass catches up.
    qz::log::warning("The pass after {} could not be made: {}", what, error.what());
    return std::nullopt;
  }
}

void Application::writeSnapshot() {
  const qz::YYYYMMDD day = today();
  std::vector<HabitSummary> habits = list();
  rooms_->widgets.write({.stored = rooms_->lastRead(), .day = day, .habits = std::move(habits)});
}

}  // namespace habitra
