#pragma once

#include <HabitraModel/DataManager.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskTemporalData.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/MainQueue.h>
#include <Support/SettableClock.h>

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TestProgram.h"

namespace habitra {

inline qz::Moment at(std::string_view text) { return qz::momentFromISO8601(text).value(); }

/// A program on a store in memory; midday of 31 January 2024.
class TaskWorld : public testing::Test, protected TestProgram {
 protected:
  TaskWorld() : TestProgram(at("2024-01-31T12:00:00Z")) {}

  TaskEntity& addTask(std::string title = "Read") {
    TaskEntity values = newlyMadeTask(std::move(title), qz::DayOfWeek::monday, clock_->now(), "UTC");
    TaskEntity& task = context_->insert(values);
    context_->save({});
    return task;
  }

  /// Records one entry for a day the way a front end does, and saves.
  std::exception_ptr record(TaskEntity& task, TaskLogEntryType type, qz::YYYYMMDD day) {
    return record(task, {entry(task, type, day)});
  }
  std::exception_ptr record(TaskEntity& task, std::vector<TaskLogRecorder::LogEntryData> entries,
                            bool saveContext = true) {
    const TaskLogRecorder::Request request{.managedObjectContext = *context_,
                                           .context = TaskModifyContext::userInitiatedFromMainApp,
                                           .saveContext = saveContext,
                                           .logEntries = std::move(entries),
                                           .createdTimestamp = clock_->now(),
                                           .createdTimeZone = qz::TimeZone::utc()};
    std::exception_ptr outcome = std::make_exception_ptr(std::logic_error("not completed"));
    recorder_.record(task, request, [&](std::exception_ptr error) { outcome = std::move(error); });
    mainQueue_.drain();
    return outcome;
  }

  TaskLogRecorder::LogEntryData entry(const TaskEntity& task, TaskLogEntryType type, qz::YYYYMMDD day) {
    const qz::Moment start = calendars_.of(task).beginning(day);
    return {.uniqueId = qz::UniqueID::generate(clock_->now()),
            .type = type,
            .period = DatedPeriod(day, TaskFrequencyPeriodType::day, qz::DayOfWeek::monday),
            .startDate = start,
            .endDate = start};
  }

  TaskProcessor::Report process() { return processor_.processAllTasks(*context_, clock_->now()); }

  /// The log, one "day type" per entry: "20240131 completedManuallyFull".
  std::vector<std::string> log(const TaskEntity& task) {
    std::vector<std::string> lines;
    for (const auto& row : context_->fetchLogEntries(task.objectID))
      lines.push_back(std::to_string(row.entryDate) + " " +
                      std::string(caseName(fromRawValue<TaskLogEntryType>(row.entryType).value())));
    return lines;
  }

  const TaskTemporalDataEntity& figures(const TaskEntity& task) { return *findTemporalData(*context_, task); }

  static std::string messageOf(const std::exception_ptr& error) {
    if (!error) return "";
    try {
      std::rethrow_exception(error);
    } catch (const std::exception& caught) {
      return caught.what();
    }
  }
};

}  // namespace habitra
