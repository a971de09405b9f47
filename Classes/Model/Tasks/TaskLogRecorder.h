#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskModifyContext.h>
#include <QZDateTime/TimeZone.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>
#include <QZKit/MainQueue.h>
#include <QZKit/UniqueID.h>

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// The one place where a task's log entries are written: completions, skips, misses, and the undo that replaces them.
/// It writes the rows, deletes what they supersede, and sets the progress on the task's temporal data; the statuses and
/// streaks that follow are the processor's work.
///
/// Works on the thread that owns the request's context; completions arrive on the main queue.
class TaskLogRecorder {
 public:
  /// One entry to record.
  struct LogEntryData {
    qz::UniqueID uniqueId;  ///< a row that already bears it is brought up to date instead of a second one being made
    TaskLogEntryType type;
    DatedPeriod period;    ///< the period that the entry counts for
    qz::Moment startDate;  ///< its day, by the task's calendar, is the day of the entry
    qz::Moment endDate;
    std::optional<double> progressValue;         ///< amount reached, for timed and counted tasks; absent is stored as 0
    std::optional<double> progressPct;           ///< fraction of the target reached; absent is stored as 0
    std::optional<qz::Moment> createdTimestamp;  ///< when the entry was made, where that is known; else the request's

    /// "<LogEntryData unique=…, period=…, startDate=…, endDate=…>"
    [[nodiscard]] std::string debugDescription() const;
  };

  /// What to record, for whom and where.
  struct Request {
    StoreContext& managedObjectContext;    ///< the entries are written in it
    TaskModifyContext context;             ///< who asked
    bool saveContext = true;               ///< save it when the entries are written
    std::vector<LogEntryData> logEntries;  ///< recorded in this order
    qz::Moment createdTimestamp;           ///< stamped on new rows
    qz::TimeZone createdTimeZone;          ///< stamped on new rows

    /// "<Request context=…, logEntries=[…]>"
    [[nodiscard]] std::string debugDescription() const;
  };

  /// Why a request was refused. Nothing has been written then.
  class Error : public qz::Error {
   public:
    enum class Reason {
      noLogEntryData,  ///< "No log entry data"
      invalidTask,     ///< "Invalid task": not a stored, active task, or not the one that has the entry already
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

  /// `calendars` tells the days of a task; both must live longer than the recorder.
  TaskLogRecorder(const TaskCalendars& calendars, qz::MainQueue& mainQueue);

  /// Records the entries of `request` for `task`, an object of the request's context.
  void record(TaskEntity& task, const Request& request, Completion completion);

  /// The same for the task with this identifier in the request's context.
  void record(const qz::UniqueID& taskId, const Request& request, Completion completion);

  /// The same for a caller that works on the context's thread and must know the outcome before it goes on: throws
  /// instead of completing.
  void recordNow(TaskEntity& task, const Request& request) { _record(task, request); }

 private:
  void _record(TaskEntity& task, const Request& request);
  /// Inserts or updates the row of one entry, after what it supersedes is gone; gives the row.
  static TaskLogEntryEntity writeRow(const TaskEntity& task, const Request& request, const LogEntryData& entry,
                                     qz::YYYYMMDD day);
  void complete(Completion completion, std::exception_ptr error);

  const TaskCalendars& calendars_;
  qz::MainQueue& mainQueue_;
};

}  // namespace habitra
