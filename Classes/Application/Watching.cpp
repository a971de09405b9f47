#include <HabitraApp/Rooms.h>

#include <HabitraModel/Tasks/Processing/CalendarDayWatcher.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

namespace habitra {
/// What wakes an application that stays, from the beginning of the watch to its end. Everything is done on the main
/// queue; what notices something only hands it over.
class Application::Watch {
 public:
  Watch(Application& application, const PassObserver& onPass)
      : application_(application),
        rooms_(*application.rooms_),
        onPass_(onPass),
        days_(
            rooms_.clock, [this](qz::Moment now) { return nextMoment(now); },
            [this](qz::Moment) { handAttempt([this] { dayMayHaveChanged(); }); }) {}

  void begin() {
    saved_ = rooms_.manager.notifications().addObserver(TaskProcessor::contextDidSave,
                                                        [this] { hand([this] { application_.afterAnswer(); }); });
    rooms_.manager.observeChanges(
        Author::app, [](const PersistentHistoryTransaction&) {},
        [this](const PersistentHistoryObserver::Changes&) { handAttempt([this] { othersHaveSaved(); }); });
    rooms_.processor.applicationDidFinishLaunching(TaskProcessor::Lifetime::resident, reporting());
    if (!rooms_.timeIsGiven()) days_.start();  // a moment that is given does not pass
  }

  void end() {
    days_.stop();
    rooms_.manager.stopObservingChanges();
    rooms_.processor.stopObserving();
    saved_.end();
    rooms_.mainQueue.drain();
    rooms_.processor.waitForPasses();
    rooms_.mainQueue.drain();
  }

 private:
  void hand(qz::MainQueue::Task task) { rooms_.mainQueue.async(std::move(task)); }
  /// For what may fail now and succeed the next time.
  void handAttempt(qz::MainQueue::Task task) {
    hand([task = std::move(task)] {
      try {
        task();
      } catch (const qz::Error& error) {
        qz::log::warning("A watch goes on after a failure: {}", error.what());
      }
    });
  }

  TaskProcessor::Completion reporting() {
    return [this](const TaskProcessorReport& report) {
      application_.afterAnswer();
      // Whoever was in the way may be gone in a moment.
      if (report.failure) {
        mustTryAgain_ = true;
        days_.startOfDayMayHaveChanged();
      }
      if (onPass_) onPass_(processReport(report));
    };
  }

  void othersHaveSaved() {
    rooms_.widgets.reloadAllTimelines();
    days_.startOfDayMayHaveChanged();
    rooms_.processor.processAllTasks(reporting());
  }

  void dayMayHaveChanged() {
    if (mustTryAgain_.exchange(false)) return rooms_.processor.processAllTasks(reporting());
    rooms_.processor.runDueBackgroundTasks(rooms_.now());
    StoreContext* const view = rooms_.readingContext();
    if (view != nullptr && rooms_.processor.isDue(*view, rooms_.now()))
      rooms_.processor.calendarDayChanged(reporting());
  }

  /// On the watcher's thread.
  qz::Moment nextMoment(qz::Moment now) {
    const auto context = rooms_.manager.context();
    const auto tasks = TaskProcessor::activeTasks(*context);
    qz::Moment next = nextStartOfDay(rooms_.calendarsSeenBy(*context), tasks, now);
    if (mustTryAgain_) next = std::min(next, now + TaskProcessor::timeBetweenAttempts);
    if (const auto task = rooms_.processor.nextBackgroundTask())
      next = std::min(next, std::max(*task, now + std::chrono::seconds(1)));
    return next;
  }

  Application& application_;
  Rooms& rooms_;
  const PassObserver& onPass_;
  std::atomic<bool> mustTryAgain_ = false;  ///< a pass failed
  CalendarDayWatcher days_;
  qz::NotificationCenter::Observation saved_;
};

void Application::watch(const PassObserver& onPass) {
  Watch watch(*this, onPass);
  try {
    watch.begin();
    rooms_->mainQueue.run();
  } catch (...) {
    watch.end();
    throw;
  }
  watch.end();
}

void Application::stopWatching() { rooms_->mainQueue.stop(); }

}  // namespace habitra
