#include <HabitraCore/RawValue.h>
#include <HabitraCore/ReportedAmount.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/Recording/HealthWriteAmount.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>

#include <algorithm>
#include <vector>

namespace habitra {
namespace {

/// Differences below this share of the whole are what rounding leaves.
constexpr double rounding = 1e-12;

HealthWriteAmount ofDuration(const AutomaticTaskType& type, double duration) {
  return {.amount = type.unit ? type.unit->convertFromTimeInterval(duration) : 0.0, .duration = duration};
}

HealthWriteAmount ofAmount(const AutomaticTaskType& type, double amount) {
  return {.amount = amount,
          .duration = type.unit && type.unit->isDuration() ? type.unit->convertToTimeInterval(amount) : 0.0};
}

/// What the health store was, or is to be, told of the entry, in the unit of the measure.
double written(StoreContext& context, const AutomaticTaskType& type, ObjectID entry) {
  double amount = 0;
  for (const HealthKitRequestEntity* row : context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", entry)) {
    const auto request = row->status != health_request_status::failed ? HealthWriteRequest::of(*row) : std::nullopt;
    if (!request || !type.unit) continue;
    const std::chrono::duration<double> length = request->sample.end - request->sample.start;
    if (const auto quantity = request->sample.quantity())
      amount += quantity->valueIn(type.unit->healthKit()).value_or(0.0);
    else if (type.isTimed())
      amount += length.count();
    else if (type.unit->isDuration())
      amount += type.unit->convertFromTimeInterval(length.count());
  }
  return amount;
}

/// The rows that count for the period of the entry, in order of creation.
std::vector<TaskLogEntryEntity> rowsOfPeriod(StoreContext& context, ObjectID task,
                                             const std::optional<TaskRules>& rules, const TaskFrequencyPeriod& period) {
  auto rows = context.fetchLogEntries(task, storedDay(period.startDate), storedDay(period.finishDate));
  std::erase_if(rows, [&](const TaskLogEntryEntity& row) {
    const auto counted = countedPeriod(row, rules);
    return !counted || counted->period.startDate != period.startDate || counted->period.finishDate != period.finishDate;
  });
  std::ranges::sort(rows, {}, &TaskLogEntryEntity::objectID);
  return rows;
}

/// Whether the entry says that something of what is measured took place.
bool tellsOfAmount(TaskLogEntryType type, bool isNegative) {
  if (isTimer(type)) return true;
  if (!isNegative) return isCompletedFullOrPartial(type);
  return isMissedFullOrPartial(type) || isAllowableMissFull(type);
}

/// What of the period the health store knows, or the entries that stay will go on to say, when `entry` is written.
double known(StoreContext& context, const TaskEntity& task, const std::optional<TaskRules>& rules,
             const AutomaticTaskType& type, const TaskLogRecorder::LogEntryData& entry, ObjectID own) {
  const TaskMeasure measure = type.measure();
  const std::int64_t units = rules ? rules->frequency.numPartialCompletionsPerPeriod() : 1;
  double reached = 0;
  double gone = 0;
  for (const TaskLogEntryEntity& row : rowsOfPeriod(context, task.objectID, rules, entry.period.period)) {
    const LoggedEntry logged = loggedEntry(row);
    if (!tellsOfAmount(logged.entryType, task.isNegative)) continue;
    const auto reported = isTimer(logged.entryType) ? std::nullopt : reportedAmount(logged, measure);
    const double added = reported ? 0.0 : addedAmount(logged, measure, units);
    reached = reported ? std::max(reached, *reported) : reached + added;
    if (row.objectID != own && !supersedes(entry.type, logged.entryType)) continue;
    const double told = written(context, type, row.objectID);
    gone += told > 0 ? told : added;
  }
  return std::max(reached - gone, 0.0);
}

}  // namespace

std::optional<HealthWriteAmount> healthWriteAmount(StoreContext& context, const TaskEntity& task,
                                                   const std::optional<TaskRules>& rules, const AutomaticTaskType& type,
                                                   const TaskLogRecorder::LogEntryData& entry, ObjectID own) {
  if (entry.timerSummary) return ofDuration(type, entry.timerSummary->duration);
  const TaskMeasure measure = type.measure();
  // A timer that ran out has run for all of the target.
  const double share = entry.progressPct.value_or(entry.timerDidExpire ? 1.0 : 0.0);
  if (measure.kind == TaskMeasure::Kind::byHand)
    return ofAmount(type, entry.progressValue.value_or(share * type.quantity));
  const double reached = entry.progressValue.value_or(share * measure.target);
  const double fresh = reached > 0 ? reached - known(context, task, rules, type, entry, own) : 0.0;
  if (!(fresh > reached * rounding)) return std::nullopt;
  return measure.kind == TaskMeasure::Kind::timed ? ofDuration(type, fresh) : ofAmount(type, fresh);
}

}  // namespace habitra
