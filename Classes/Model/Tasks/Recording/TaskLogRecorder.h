#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Links/WidgetCenter.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Recording/TaskModifyContext.h>
#include <HabitraModel/Tasks/Recording/TimedTaskEntry.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/TimeZone.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>
#include <QZKit/MainQueue.h>
#include <QZKit/UniqueID.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// The one place where a task's log entries are written: completions, skips, misses, and the undo that replaces them.
/// It writes the rows, deletes what they supersede or refute, re-types the failures whose allowance they change, asks
/// for writes to the health store, and sets the progress on the task's temporal data. Then it tells those who show
/// tasks elsewhere. The statuses and streaks that follow are the processor's work.
///
/// Works on the thread that owns the request's context; completions arrive on the main queue.
class TaskLogRecorder {
 public:
  /// Whether the paired device is told, and how.
  enum class NotifyPairedDeviceType : std::uint8_t {
    none,
    delayed,    ///< with what else changes in the next seconds
    immediate,  ///< now
  };
  /// How long a delayed message waits for others.
  static constexpr std::chrono::seconds batchingInterval{30};

  /// One entry to record.
  struct LogEntryData {
    qz::UniqueID uniqueId;  ///< a row that already bears it is brought up to date instead of a second one being made
    TaskLogEntryType type;
    DatedPeriod period;    ///< the period that the entry counts for
    qz::Moment startDate;  ///< its day, by the task's calendar, is the day of the entry
    qz::Moment endDate;
    /// The amount that the period has reached with the entry, what was said or measured before included: of a timed
    /// task in seconds, else in the unit of its target. Of a run of a timer its seconds. Absent is stored as 0.
    std::optional<double> progressValue;
    std::optional<double> progressPct;  ///< the fraction of the target reached, likewise; absent is stored as 0
    std::optional<TimedTaskEntry> timerSummary;  ///< the run of a timer that produced it
    bool timerDidExpire = false;                 ///< it ran out: without an amount, all of the target
    std::optional<qz::Moment> createdTimestamp;  ///< when the entry was made, where that is known; else the request's
    bool isTemporaryRecord = false;              ///< a provisional row: its cloudStatus is "TMP"
    bool hasNewIdentifier = false;               ///< made for this entry: no row is looked for that bears it already

    /// "<LogEntryData unique=…, period=…, startDate=…, endDate=…>"
    [[nodiscard]] std::string debugDescription() const;
  };

  /// What to record, for whom and where.
  struct Request {
    StoreContext& managedObjectContext;    ///< the entries are written in it
    TaskModifyContext context;             ///< who asked
    bool saveContext = true;               ///< save it when the entries are written; else see deliverSaved()
    std::vector<LogEntryData> logEntries;  ///< recorded in this order
    qz::Moment createdTimestamp;           ///< stamped on new rows
    qz::TimeZone createdTimeZone;          ///< stamped on new rows
    NotifyPairedDeviceType notifyPairedDevice = NotifyPairedDeviceType::none;
    bool recordToHealthKitIfNecessary = false;   ///< also ask for a write to the health store, where the task does that
    std::optional<std::string> healthKitDevice;  ///< the device that such a write names
    std::optional<std::string> command;          ///< what the person asked for; a save for it can be taken back

    /// "<Request context=…, logEntries=[…]>"
    [[nodiscard]] std::string debugDescription() const;
  };

  /// Why a request was refused. Nothing has been written then.
  class Error : public qz::Error {
   public:
    enum class Reason {
      noLogEntryData,  ///< "No log entry data"
      invalidTask,     ///< "Invalid task": not a stored, active task, or not the one that has the entry already
      unableToRecordToSharedTask,  ///< "Unable to record to task shared with me": another person's
    };
    explicit Error(Reason reason);
    [[nodiscard]] Reason reason() const { return reason_; }

   private:
    Reason reason_;
  };

  /// The identifier of a request names no task: "Task not found".
  class RecordTaskError : public qz::Error {
   public:
    RecordTaskError();
  };

  /// Called on the main queue: with nothing when all is recorded, else with one of the errors above or the store's.
  using Completion = std::function<void(std::exception_ptr)>;

  /// Who is told of what was recorded.
  struct Receivers {
    TaskLink& watch;
    TaskLink& sharedTasks;
    WidgetCenter& widgets;
  };

  /// `calendars` tells the days of a task. All must live longer than the recorder.
  TaskLogRecorder(const TaskCalendars& calendars, qz::MainQueue& mainQueue, Receivers receivers);

  /// Records the entries of `request` for `task`, an object of the request's context. With `canWaitForCloudToFinish`,
  /// and for a context that waits for it, the completion comes after a shared task was brought up to date on the cloud.
  void record(TaskEntity& task, const Request& request, Completion completion, bool canWaitForCloudToFinish = false);

  /// The same for the task with this identifier in the request's context.
  void record(const qz::UniqueID& taskId, const Request& request, Completion completion,
              bool canWaitForCloudToFinish = false);

  /// Writes the entries for a caller that works on the context's thread, must know the outcome before it goes on, and
  /// tells others itself: throws instead of completing.
  void recordNow(TaskEntity& task, const Request& request) { write(task, request); }

  /// Tells others what was recorded by recordNow(), or without saving: for whoever has saved the unit since. `context`:
  /// who asked.
  static void deliverSaved(const Receivers& receivers, TaskModifyContext context);

 private:
  void _record(TaskEntity& task, const Request& request, bool canWaitForCloudToFinish, Completion completion);
  void write(TaskEntity& task, const Request& request);
  void writeEntries(TaskEntity& task, const Request& request) const;
  /// Puts into the unit who is to be told of the task.
  void queueForReceivers(const TaskEntity& task, const Request& request) const;
  void complete(Completion completion, std::exception_ptr error);

  const TaskCalendars& calendars_;
  qz::MainQueue& mainQueue_;
  const Receivers receivers_;
};

}  // namespace habitra
