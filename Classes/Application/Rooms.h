#pragma once

#include <HabitraApp/Application.h>
#include <HabitraApp/WidgetSnapshot.h>
#include <HabitraBackup/AutomaticBackups/AutomaticBackups.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZKit/MainQueue.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// What an application keeps for its whole life: the rooms below it, wired together once.
class Application::Rooms {
 public:
  explicit Rooms(const ApplicationSettings& settings);

  [[nodiscard]] qz::Moment now() const { return manager.clock().now(); }
  /// Whether that need not have come.
  [[nodiscard]] bool timeIsGiven() const { return timeIsGiven_; }

  /// The context of calls that look, kept from one to the next so that a command opens the store once; null when there
  /// is no store yet.
  [[nodiscard]] StoreContext* readingContext();

  /// The state of the store that was looked at last. REQUIRES: readingContext() has given a context.
  [[nodiscard]] HistoryToken lastRead() { return PersistentHistoryFetcher(*readingContext_).currentToken(); }

  /// A context to change stored habits in, with the writers' turn taken. Throws TaskNameError for `name` when there is
  /// no store, since it can then be nobody's.
  [[nodiscard]] std::unique_ptr<StoreContext> contextToChange(std::string_view name);

  /// A context to change anything in, with the writers' turn taken; makes the store when there is none.
  [[nodiscard]] std::unique_ptr<StoreContext> contextToWrite();

  /// Lets the calendars go by the device's zone where there is no store that knows more.
  void followTimeZone() { calendars = TaskCalendars(timeZone(), qz::HHMMSS::midnight); }

  /// When the days begin, by the settings as a context sees them; for any thread.
  [[nodiscard]] TaskCalendars calendarsSeenBy(StoreContext& context) const;

  /// The settings as `context` sees them; null while there is no store.
  [[nodiscard]] Settings settings(StoreContext* context) const;

  /// A habit as it stands now, worked out in memory.
  [[nodiscard]] HabitSummary summarize(StoreContext& context, const TaskEntity& task);

  /// What the log of a habit makes of this period, which may be over or hold today; none where the stored frequency
  /// cannot be read.
  [[nodiscard]] std::optional<CompletionStatus> statusOf(StoreContext& context, const TaskEntity& task,
                                                         const TaskFrequencyPeriod& period);

  /// The active habit that `name` means. Throws TaskNameError.
  [[nodiscard]] TaskEntity& lookUp(StoreContext& context, std::string_view name);

  /// Hands one entry of a person to the recorder, unsaved, and waits for its completion. Throws what it failed with.
  void record(StoreContext& context, TaskEntity& task, TaskLogEntryType type, const DatedPeriod& period,
              qz::Moment startDate, qz::Moment endDate);

  /// Saves what was recorded for a person's command, and tells others of it.
  void saveRecorded(StoreContext& context, std::string command);

  /// Begins something and waits for its completion. Throws what it failed with.
  void waitFor(const std::function<void(const TaskLogRecorder::Completion&)>& begin);

  /// A full pass over the habits, however it is asked for first, and waits for it.
  TaskProcessorReport pass();

  /// A pass over the habits that something but their keeper completes. Throws nothing: what goes wrong is logged.
  void processAutomaticTasks() noexcept;

  /// Lets go of the context of calls that look, so that the store can be replaced.
  void closeReadingContext() { readingContext_.reset(); }

  /// Makes the backup of today where that is due, never by a time that is given or that cannot be right. Never throws:
  /// what could not be made now is made next time.
  void backUp() noexcept;

  /// Lets go of history that nobody needs any more, at most once a day and never by a time that is given.
  /// Never throws: it can wait.
  void trimHistory(StoreContext& context) noexcept;

  const std::shared_ptr<const qz::Clock> clock;
  const std::string version;
  DataManager manager;
  SampleStore health;
  /// With the app-wide start of day as the newest of the contexts above has seen it.
  TaskCalendars calendars;
  qz::MainQueue mainQueue;
  OutboxTaskLink watch{OutboxLink::watch};
  OutboxTaskLink sharedTasks{OutboxLink::sharedTask};
  WidgetSnapshot widgets;
  AutomaticBackups backups;
  TaskLogRecorder recorder;
  TaskProcessor processor;

 private:
  [[nodiscard]] qz::TimeZone timeZone() const { return timeZone_ ? *timeZone_ : qz::TimeZone::current(); }
  /// Lets the calendars go by the settings as a context sees them.
  void followStartOfDay(StoreContext& context) { calendars = calendarsSeenBy(context); }

  const std::optional<qz::TimeZone> timeZone_;
  const bool timeIsGiven_;
  std::unique_ptr<StoreContext> readingContext_;
};

/// What a front end is told of a pass.
[[nodiscard]] ProcessReport processReport(const TaskProcessorReport& report);

}  // namespace habitra
