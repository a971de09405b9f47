#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/EntryTables.h>
#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskLogEntryChoice.h>

#include <nlohmann/json.hpp>
#include <string>

namespace habitra {

CompletionStatus CompletionStatus::unchecked(const TaskProgressCodable& progress, TaskFrequency::SkipMode mode) {
  return {Status::positiveIncomplete(mode), progress};
}

CompletionStatus CompletionStatus::completed(const TaskProgressCodable& progress) {
  return {Status::positiveComplete(), progress};
}

StreakedCompletionStatus CompletionStatus::applyEntryType(const StreakStatus& streak, TaskLogEntryType type) const {
  StreakedCompletionStatus result{*this, streak};
  if (isNegative()) {
    applyToNegative(result.completionStatus.status, result.completionStatus.codableProgress, result.streak, type);
  } else {
    applyToPositive(result.completionStatus.status, result.completionStatus.codableProgress, result.streak, type);
  }
  return result;
}

StreakedCompletionStatus CompletionStatus::next(const StreakStatus& streak, bool isPartial,
                                                const TapRules& rules) const {
  const TaskLogEntryType type = nextEntryType(*this, isPartial, rules.missIsAllowed);
  CompletionStatus start = *this;
  if (!habitra::isPartial(type)) {
    start.status = isNegative() ? Status::negativeComplete(rules.skipMode) : Status::positiveIncomplete(rules.skipMode);
    start.codableProgress.empty();
  }
  return start.applyEntryType(streak, type);
}

StreakedCompletionStatus CompletionStatus::next(const StreakStatus& streak, bool isPartial) const {
  return next(streak, isPartial, TapRules());
}

namespace {

/// The streak after a period of this status, which came to it from being open.
StreakStatus streakAfter(StreakStatus streak, CompletionStatus::Status::Kind kind) {
  using Kind = CompletionStatus::Status::Kind;
  if (kind == Kind::positiveComplete) streak.increment();
  if (kind == Kind::positiveMiss || kind == Kind::negativeMiss) streak.reset();
  return streak;
}

}  // namespace

StreakedCompletionStatus CompletionStatus::next(const StreakStatus& streak, double pendingTimerDuration,
                                                const TapRules& rules) const {
  using Kind = Status::Kind;
  CompletionStatus timed = *this;
  auto* const timer = std::get_if<TaskProgressTimer>(&timed.codableProgress.base);
  if (timer != nullptr) timer->addDuration(pendingTimerDuration);
  const bool isDecided = status.kind() == Kind::positiveComplete || status.kind() == Kind::negativeMiss ||
                         status.kind() == Kind::negativeAllowedMiss;
  if (timer == nullptr || isDecided || !timed.codableProgress.isReached())
    return {timed, streakAfter(streak, status.kind())};
  if (!isNegative()) return timed.applyEntryType(streak, TaskLogEntryType::completedManuallyFull);
  return timed.applyEntryType(
      streak, rules.missIsAllowed ? TaskLogEntryType::allowableMissManuallyFull : TaskLogEntryType::missedManuallyFull);
}

StreakedCompletionStatus CompletionStatus::next(const StreakStatus& streak, double pendingTimerDuration) const {
  return next(streak, pendingTimerDuration, TapRules());
}

void to_json(nlohmann::json& json, const CompletionStatus::Status& status) {
  nlohmann::json payload = nlohmann::json::object();
  if (const auto mode = status.skipMode()) payload["_0"] = rawValue(*mode);
  json = {{std::string(caseName(status.kind())), payload}};
}

CompletionStatus::Status decodedStatus(const nlohmann::json& json) {
  using Status = CompletionStatus::Status;
  using Kind = Status::Kind;
  if (!json.is_object() || json.size() != 1)
    throw qz::DecodingError("Unable to create CompletionStatus from " + qz::coded_form::text(json));
  const auto member = json.begin();
  const auto kind = fromCaseName<Kind>(member.key());
  if (!kind) throw qz::DecodingError("Unable to create CompletionStatus from " + qz::coded_form::text(json));
  const auto skipMode = [&] {
    return decodeRawValue<TaskFrequency::SkipMode>(qz::coded_form::member(member.value(), "_0"),
                                                   "TaskFrequency.SkipMode");
  };
  switch (*kind) {
    case Kind::positiveIncomplete: return Status::positiveIncomplete(skipMode());
    case Kind::negativeComplete: return Status::negativeComplete(skipMode());
    case Kind::positiveComplete: return Status::positiveComplete();
    case Kind::positiveMiss: return Status::positiveMiss();
    case Kind::positiveSkip: return Status::positiveSkip();
    case Kind::negativeMiss: return Status::negativeMiss();
    case Kind::negativeAllowedMiss: break;
  }
  return Status::negativeAllowedMiss();
}

void to_json(nlohmann::json& json, const CompletionStatus& status) {
  json = {{"status", status.status}, {"codableProgress", status.codableProgress}};
}

void from_json(const nlohmann::json& json, CompletionStatus& status) {
  status.status = decodedStatus(qz::coded_form::member(json, "status"));
  qz::coded_form::member(json, "codableProgress").get_to(status.codableProgress);
}

}  // namespace habitra
