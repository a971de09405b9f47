#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Mapping/StoredIdentifier.h>
#include <HabitraModel/Tasks/LogBeginning.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <HabitraModel/Tasks/Recording/LogEntryWriter.h>
#include <HabitraModel/Tasks/Recording/LostBeginning.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {
namespace {

/// The cloudStatus of a provisional row.
constexpr std::string_view temporaryStatus = "TMP";

/// The day of the start moment; that of the dated period where the zone left it out, so that no moment lies on it.
qz::YYYYMMDD dayOf(const TaskLogRecorder::LogEntryData& entry, const TaskCalendar& calendar) {
  const qz::YYYYMMDD day = calendar.day(entry.startDate);
  const qz::YYYYMMDD meant = entry.period.date;
  return day != meant && calendar.day(calendar.beginning(meant)) == day ? meant : day;
}

/// The time within which what an entry of this period reports has taken place.
HealthWriteRequest::Span spanOf(const TaskFrequencyPeriod& period, const TaskCalendar& calendar) {
  return {calendar.beginning(period.startDate), calendar.beginning(period.finishDate.nextDay())};
}

/// Whether the entry says that what the task measures took place: of a task to avoid, that it was not avoided.
bool tookPlace(TaskLogEntryType type, bool isNegative) {
  if (!isNegative) return isCompletedFullOrPartial(type);
  return isMissedFullOrPartial(type) || isAllowableMissFull(type);
}

}  // namespace

LogEntryWriter::LogEntryWriter(const TaskEntity& task, const std::optional<TaskRules>& rules,
                               const TaskLogRecorder::Request& request, const TaskCalendar& calendar)
    : task_(task),
      request_(request),
      calendar_(calendar),
      context_(request.managedObjectContext),
      now_(context_.store().clock().now()),
      rules_(rules),
      creationDay_(calendar.creationDay(task)),
      filledIn_(context_, task, rules),
      emptyDays_(context_, task.objectID) {}

std::optional<TaskLogEntryEntity> LogEntryWriter::existing(StoreContext& context,
                                                           const TaskLogRecorder::LogEntryData& entry) {
  if (entry.hasNewIdentifier) return std::nullopt;
  for (const std::string& uniqueId : storedForms(entry.uniqueId))
    if (auto found = context.findLogEntry(uniqueId)) return found;
  return std::nullopt;
}

auto LogEntryWriter::write(const TaskLogRecorder::LogEntryData& entry) -> Written {
  const auto existing = LogEntryWriter::existing(context_, entry);
  if (existing) qz::log::debug("Found existing entry with ID={}", entry.uniqueId.text());
  const qz::YYYYMMDD day = dayOf(entry, calendar_);
  TaskLogEntryEntity row = filled(existing.value_or(TaskLogEntryEntity{}), entry, day, !existing);
  const TaskLogEntryType type = entryTypeFromStored(row.entryType);
  const auto healthWrite = newToHealthStore(entry, row.objectID);
  removeSuperseded(entry.period.period, type, row.objectID);

  const auto beginning = beginningAfter(day, type);
  if (existing)
    context_.updateLogEntry(existing->key(), row);
  else
    row.objectID = context_.insertLogEntry(row);
  filledIn_.removeRefutedBy(row);
  if (beginning) remove(filledIn_.refutedByEarlierBeginning(*beginning));
  if (entry.type == TaskLogEntryType::unknown && creationDay_)
    remove(refutedByLostBeginning(context_, row, *creationDay_, filledIn_));
  if (existing) withdrawHealthWrites(row.objectID);
  if (healthWrite) requestHealthWrite(row, entry, *healthWrite);
  const qz::YYYYMMDD last = std::max(day, entry.period.period.finishDate);
  emptyDays_.endAt(last);
  filledIn_.wroteUpTo(last);
  Written written{.row = std::move(row), .day = day};
  if (existing && existing->entryDate != written.row.entryDate) {
    // Where it stood, nothing stands now: what followed from it is found anew.
    filledIn_.removeRefutedBy(*existing);
    if (creationDay_) remove(refutedByLostBeginning(context_, *existing, *creationDay_, filledIn_));
    written.earlierDay = existingDayFromStored(existing->entryDate);
  }
  return written;
}

void LogEntryWriter::removeSuperseded(const TaskFrequencyPeriod& period, TaskLogEntryType type, ObjectID kept) {
  if (followsFromEarlierDays(type) && emptyDays_.hold(period.startDate, period.finishDate)) return;
  std::vector<LogKey> superseded;
  const auto look = [&](const LogRow& row) {
    if (row.objectID == kept || !supersedes(type, entryTypeFromStored(row.entryType))) return;
    if (countsFor(row, period, rules_)) superseded.push_back({task_.objectID, row.entryDate, row.objectID});
  };
  context_.readLog(task_.objectID, storedDay(period.startDate), storedDay(period.finishDate), look);
  remove(superseded);
}

void LogEntryWriter::remove(const std::vector<LogKey>& keys) {
  for (const LogKey& key : keys) context_.removeLogEntry(key);
}

std::optional<qz::YYYYMMDD> LogEntryWriter::beginningAfter(qz::YYYYMMDD day, TaskLogEntryType type) const {
  if (!marksHistory(type) || !creationDay_ || day >= *creationDay_) return std::nullopt;
  const auto log = beginningOfLog(context_, task_.objectID, storedDay(*creationDay_));
  const qz::YYYYMMDD beginning = log.firstKeptDay.value_or(*creationDay_);
  return day < beginning ? std::optional(beginning) : std::nullopt;
}

TaskLogEntryEntity LogEntryWriter::filled(TaskLogEntryEntity row, const TaskLogRecorder::LogEntryData& entry,
                                          qz::YYYYMMDD day, bool isNew) const {
  row.uniqueId = entry.uniqueId.text();
  if (isNew || entry.createdTimestamp)
    row.createdTimestamp = entry.createdTimestamp.value_or(request_.createdTimestamp);
  if (isNew) row.createdTimeZone = request_.createdTimeZone.identifier();
  row.task = task_.objectID;
  setEntry(row, entry.type, DatedPeriod(day, entry.period.period), entry.progressPct.value_or(0.0),
           entry.progressValue.value_or(0.0));
  // The last part of a failure is the failure.
  const bool isPart = task_.isNegative && entry.type == TaskLogEntryType::missedManuallyPartial;
  if (isPart && rules_ && failsByParts(context_, *rules_, row))
    row.entryType = rawValue(TaskLogEntryType::missedManuallyFull);
  if (entry.isTemporaryRecord) {
    row.cloudStatus = temporaryStatus;
    row.cloudStatusDate = now_;
  } else if (row.cloudStatus == temporaryStatus) {
    row.cloudStatus.reset();
    row.cloudStatusDate.reset();
  }
  return row;
}

void LogEntryWriter::withdrawHealthWrites(ObjectID entry) {
  if (!request_.recordToHealthKitIfNecessary) return;
  for (HealthKitRequestEntity* request : context_.fetchRelated<HealthKitRequestEntity>("taskLogEntry", entry))
    context_.remove(*request);
}

std::optional<HealthWriteAmount> LogEntryWriter::newToHealthStore(const TaskLogRecorder::LogEntryData& entry,
                                                                  ObjectID existing) const {
  if (!request_.recordToHealthKitIfNecessary || !tookPlace(entry.type, task_.isNegative)) return std::nullopt;
  const auto type = automaticTypeOf(task_);
  const auto health = type ? type->type.healthType() : std::nullopt;
  if (!health || !health->writesToHealthKit()) return std::nullopt;
  return healthWriteAmount(context_, task_, rules_, *type, entry, existing);
}

void LogEntryWriter::requestHealthWrite(const TaskLogEntryEntity& row, const TaskLogRecorder::LogEntryData& entry,
                                        const HealthWriteAmount& written) {
  const auto type = automaticTypeOf(task_);
  if (!type) return;
  const auto taskId = task_.uniqueId ? qz::UniqueID::fromText(*task_.uniqueId) : std::nullopt;
  const auto request = healthWriteRequest(*type, spanOf(entry.period.period, calendar_), entry.endDate, written.amount,
                                          written.duration, request_.healthKitDevice, taskId);
  if (!request) return;
  HealthKitRequestEntity values{.created = now_,
                                .status = std::string(health_request_status::pending),
                                .statusDate = now_,
                                .taskLogEntry = row.objectID};
  request->writeTo(values);
  context_.insert(values);
}

}  // namespace habitra
