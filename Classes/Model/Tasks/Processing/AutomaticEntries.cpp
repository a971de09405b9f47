#include <HabitraCore/ReportedAmount.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/AutomaticEntries.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace habitra {
namespace {

using Type = TaskLogEntryType;

/// Of entries that are not in the log yet, which come after all that are.
constexpr std::int64_t newOrder = std::numeric_limits<std::int64_t>::max() - 1;

}  // namespace

/// What the log says of a period before data are looked at.
struct AutomaticEntries::Standing {
  bool isDecidedOtherwise = false;  ///< by a person, or sealed
  bool hasFull = false;
  std::vector<LoggedEntry> fulls;     ///< that data asked for
  std::vector<LoggedEntry> partials;  ///< likewise
  std::int64_t lastByHand = 0;        ///< order of the last part that people or timers added

  [[nodiscard]] bool hasOwn() const { return !fulls.empty() || !partials.empty(); }
  [[nodiscard]] double amount() const {
    return !fulls.empty() ? fulls.back().progressTotal : !partials.empty() ? partials.back().progressTotal : 0.0;
  }
};

/// What people and timers say of it, apart from what the health store has as samples already.
struct AutomaticEntries::Said {
  double added = 0.0;             ///< by parts and runs that report no amount of the whole
  double inHealthStore = 0.0;     ///< by others of these, which are measured as well
  std::optional<double> reached;  ///< the amount reported last, and what was added after it

  /// What is measured may hold all that was reported; what was only added it does not.
  [[nodiscard]] double with(double measured) const { return std::max(measured + added, reached.value_or(0.0)); }
};

/// What data say of it.
struct AutomaticEntries::Finding {
  bool hasData = false;
  bool isReached = false;
  bool moreIsNearer = false;  ///< to the target
  double measured = 0.0;
  double measuredAlone = 0.0;  ///< without what entries by hand stand for already
  double amount = 0.0;         ///< with what people said
  double share = 0.0;
};

AutomaticEntries::AutomaticEntries(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment,
                                   const AutomaticTaskType& type, const HealthMeasuring& measuring, qz::Moment now)
    : context_(context),
      task_(task),
      assessment_(assessment),
      type_(type),
      measuring_(measuring),
      now_(now),
      filledIn_(context, task, assessment.rules) {}

void AutomaticEntries::add(const PeriodOfLog& period, const PeriodNews& news) {
  const auto health = type_.type.healthType();
  if (period.isOpen && health && health->isFluctuating()) return;
  if (task_.isNegative && period.isPaused) return;
  const Standing standing = this->standing(period);
  if (standing.isDecidedOtherwise) {
    qz::log::debug("Already has full entry for this period, skipping. date={}",
                   period.period.startDate.debugDescription());
    return;
  }
  const Finding finding = find(period);
  const bool hasNews = news.hasChanged || (news.mayHaveChanged && finding.hasData);
  if (hasNews && !period.isOpen && !standing.hasFull) touch(period.period.startDate);
  const bool isJudged = !period.isOpen && standing.hasFull;
  // Of an amount of 0 only an entry tells whether it was measured.
  const bool isKnown = finding.amount != 0 || finding.hasData == standing.hasOwn();
  if (isJudged && finding.amount == standing.amount() && isKnown) return;
  if (finding.isReached) {
    decide(period, standing, finding);
    return;
  }
  // What was reached in the past was so for the target of its time; more of the same does not speak against it.
  const bool isMore = finding.moreIsNearer && finding.amount > standing.amount();
  if (isJudged && !standing.fulls.empty() && (isMore || news.isOfOtherMeasure)) return;
  if (!finding.hasData && !news.hasChanged) return;
  for (const LoggedEntry& full : standing.fulls) takeBack(period, full);
  carry(period, standing, finding);
}

AutomaticPlan AutomaticEntries::finish() {
  for (const LogKey& refuted : filledIn_.refutedAfter(decided_)) plan_.revision.removed.insert(refuted);
  if (task_.isNegative && !plan_.revision.added.empty()) allowFailures();
  return std::move(plan_);
}

void AutomaticEntries::allowFailures() {
  std::map<qz::YYYYMMDD, std::size_t> failures;
  for (std::size_t i = 0; i < plan_.entries.size(); ++i)
    if (plan_.entries[i].type == Type::missedAutomaticallyFull)
      failures.emplace(plan_.entries[i].period.period.startDate, i);
  const LogRevision revision = plan_.revision;  // as it is before any of them is allowed
  visitPeriods(context_, task_, assessment_, revision.from.value_or(assessment_.today), revision,
               [&](const PeriodOfLog& period) {
                 const auto failure = failures.find(period.period.startDate);
                 if (failure == failures.end() || !period.missIsAllowed) return;
                 auto& entry = plan_.entries[failure->second];
                 if (entry.period.period != period.period) return;
                 entry.type = Type::allowableMissAutomaticallyFull;
                 plan_.revision.added[failure->second].entryType = Type::allowableMissAutomaticallyFull;
               });
}

bool AutomaticEntries::isOwnFull(const LoggedEntry& entry) const {
  return isMeasured(entry) && (entry.entryType == Type::completedAutomaticallyFull) != task_.isNegative;
}

bool AutomaticEntries::isDecidedOtherwise(const LoggedEntry& entry) const {
  const bool isSeal = entry.entryType == Type::completedAutomaticallyFull && !isOwnFull(entry);
  return isFull(entry.entryType) && (isSeal || !isAutomatic(entry.entryType));
}

AutomaticEntries::Standing AutomaticEntries::standing(const PeriodOfLog& period) const {
  const Type partial = task_.isNegative ? Type::missedAutomaticallyPartial : Type::completedAutomaticallyPartial;
  Standing standing;
  for (const LoggedEntry& entry : period.entries) {
    standing.isDecidedOtherwise = standing.isDecidedOtherwise || isDecidedOtherwise(entry);
    standing.hasFull = standing.hasFull || isFull(entry.entryType);
    if (isOwnFull(entry)) standing.fulls.push_back(entry);
    if (entry.entryType == partial) standing.partials.push_back(entry);
    const bool isPart = isPartial(entry.entryType) && !isAutomatic(entry.entryType);
    if (isPart || isTimer(entry.entryType)) standing.lastByHand = std::max(standing.lastByHand, entry.order);
  }
  return standing;
}

AutomaticEntries::Finding AutomaticEntries::find(const PeriodOfLog& period) const {
  const MeasurementFamily family = measurementFamily(type_).value();
  const bool isSingleDay = period.period.startDate == period.period.finishDate;
  const double needed = neededAmount(type_, period.expectedUnits, isSingleDay);
  const PeriodMeasurement measured = measuring_.measure(period.period);
  Finding finding{.hasData = measured.hasData,
                  .measured = measured.amount,
                  .measuredAlone = measured.amount,
                  .amount = measured.amount};
  const bool addsUp = family == MeasurementFamily::amount || family == MeasurementFamily::samples ||
                      family == MeasurementFamily::screenTime;
  // Of several nights it is counted how many were as they should be.
  finding.moreIsNearer =
      addsUp || family == MeasurementFamily::rings || (family == MeasurementFamily::bedtime && !isSingleDay);
  if (addsUp && measured.hasData) {
    const Said said = saidByHand(period, needed);
    finding.amount = said.with(measured.amount);
    finding.measuredAlone -= said.inHealthStore;
  }
  finding.isReached = measured.hasData && measured.isReached.value_or(needed > 0 && finding.amount >= needed);
  finding.share = needed > 0 ? finding.amount / needed : 0;
  return finding;
}

AutomaticEntries::Said AutomaticEntries::saidByHand(const PeriodOfLog& period, double needed) const {
  const Type partial = task_.isNegative ? Type::missedManuallyPartial : Type::completedManuallyPartial;
  TaskMeasure measure = type_.measure();
  measure.target = needed;
  Said said;
  for (const LoggedEntry& entry : period.entries) {
    if (entry.entryType != partial && !isTimer(entry.entryType)) continue;
    if (const auto reported = entry.entryType == partial ? reportedAmount(entry, measure) : std::nullopt) {
      said.reached = reported;
      continue;
    }
    const double amount = addedAmount(entry, measure, period.expectedUnits);
    if (said.reached) *said.reached += amount;
    (isInHealthStore(entry) ? said.inHealthStore : said.added) += amount;
  }
  return said;
}

bool AutomaticEntries::isInHealthStore(const LoggedEntry& entry) const {
  const auto requests = context_.fetchRelated<HealthKitRequestEntity>("taskLogEntry", ObjectID{entry.order});
  return std::ranges::any_of(requests, [this](const HealthKitRequestEntity* row) {
    const auto request = HealthWriteRequest::of(*row);
    return request && measuring_.holds(request->sample);
  });
}

void AutomaticEntries::decide(const PeriodOfLog& period, const Standing& standing, const Finding& finding) {
  if (!standing.fulls.empty()) return;
  for (const LoggedEntry& partial : standing.partials) takeBack(period, partial);
  Finding whole = finding;
  whole.share = 1.0;
  const Type type = task_.isNegative ? Type::missedAutomaticallyFull : Type::completedAutomaticallyFull;
  record(period, type, whole, nullptr, std::nullopt);
  if (task_.isNegative) plan_.failures.insert(period.period.finishDate);
  plan_.decidesPeriod = true;
}

bool AutomaticEntries::countsTimes(const PeriodOfLog& period) const {
  if (type_.measure().kind != TaskMeasure::Kind::byHand) return false;
  const MeasurementFamily family = measurementFamily(type_).value();
  // Of a single night it is its time of day that is measured.
  const bool isSingleDay = period.period.startDate == period.period.finishDate;
  return family == MeasurementFamily::samples || (family == MeasurementFamily::bedtime && !isSingleDay);
}

void AutomaticEntries::carryTimes(const PeriodOfLog& period, const Standing& standing, const Finding& finding) {
  const Type type = task_.isNegative ? Type::missedAutomaticallyPartial : Type::completedAutomaticallyPartial;
  const auto wanted = static_cast<std::size_t>(std::max(finding.measuredAlone, 0.0));
  for (std::size_t i = wanted; i < standing.partials.size(); ++i) takeBack(period, standing.partials[i]);
  for (std::size_t i = standing.partials.size(); i < wanted; ++i) {
    Finding times = finding;
    times.amount = static_cast<double>(i + 1);
    times.share = times.amount / static_cast<double>(period.expectedUnits);
    record(period, type, times, nullptr, std::nullopt);
  }
}

void AutomaticEntries::carry(const PeriodOfLog& period, const Standing& standing, const Finding& finding) {
  if (countsTimes(period)) return carryTimes(period, standing, finding);
  const bool carriesAmount = type_.measure().kind != TaskMeasure::Kind::byHand && finding.measured > 0;
  const LoggedEntry* const last = standing.partials.empty() ? nullptr : &standing.partials.back();
  for (const LoggedEntry& partial : standing.partials)
    if (!carriesAmount || partial.order != last->order) takeBack(period, partial);
  if (!carriesAmount) return;
  const Type type = task_.isNegative ? Type::missedAutomaticallyPartial : Type::completedAutomaticallyPartial;
  if (last == nullptr) {
    record(period, type, finding, nullptr, std::nullopt);
    return;
  }
  const bool isLast = last->order > standing.lastByHand;
  if (isLast && last->progressTotal == finding.amount && last->progress == finding.share) return;
  const LogKey key{task_.objectID, last->entryDate, ObjectID{last->order}};
  const auto row = context_.findLogEntry(key);
  const auto uniqueId = row && row->uniqueId ? qz::UniqueID::fromText(*row->uniqueId) : std::nullopt;
  const bool staysInPlace = isLast && uniqueId;
  if (!staysInPlace) remove(*last);
  record(period, type, finding, staysInPlace ? last : nullptr, uniqueId);
}

void AutomaticEntries::record(const PeriodOfLog& period, Type type, const Finding& finding, const LoggedEntry* inPlace,
                              std::optional<qz::UniqueID> uniqueId) {
  // Of a period that is not over the last day has not come.
  const qz::YYYYMMDD day = std::min(period.period.finishDate, assessment_.today);
  TaskLogEntryEntity row;
  row.task = task_.objectID;
  setEntry(row, type, DatedPeriod(day, period.period), finding.share, finding.amount);
  row.objectID = ObjectID{inPlace != nullptr ? inPlace->order : newOrder};
  const qz::Moment start = assessment_.calendar.beginning(day);
  plan_.entries.push_back({.uniqueId = uniqueId.value_or(qz::UniqueID::generate(now_)),
                           .type = type,
                           .period = DatedPeriod(day, period.period),
                           .startDate = start,
                           .endDate = start,
                           .progressValue = finding.amount,
                           .progressPct = finding.share});
  plan_.revision.added.push_back(loggedEntry(row));
  for (const LoggedEntry& entry : period.entries)
    if (entry.order != rawValue(row.objectID) && supersedes(type, entry.entryType)) remove(entry);
  refute(period, day);
  touch(period.period.startDate);
}

void AutomaticEntries::takeBack(const PeriodOfLog& period, const LoggedEntry& entry) {
  if (const auto day = existingDayFromStored(entry.entryDate)) refute(period, *day);
  remove(entry);
  if (task_.isNegative && isFull(entry.entryType)) plan_.failures.insert(period.period.finishDate);
  touch(period.period.startDate);
}

void AutomaticEntries::refute(const PeriodOfLog& period, qz::YYYYMMDD day) {
  for (const LoggedEntry& entry : period.entries)
    if (isFilledIn(entry)) remove(entry);
  decided_.insert(day);
}

void AutomaticEntries::remove(const LoggedEntry& entry) {
  plan_.revision.removed.insert({task_.objectID, entry.entryDate, ObjectID{entry.order}});
}

void AutomaticEntries::touch(qz::YYYYMMDD day) {
  plan_.revision.from = std::min(plan_.revision.from.value_or(day), day);
}

}  // namespace habitra
