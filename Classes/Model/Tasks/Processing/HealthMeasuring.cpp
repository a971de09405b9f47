#include <HabitraCore/AutomaticTaskType/ScreenTimeUse.h>
#include <HabitraCore/RawValue.h>
#include <HabitraModel/Tasks/Processing/HealthMeasuring.h>

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <utility>

namespace habitra {
namespace {

using Type = qz::QZHKObjectType;
using Unit = qz::QZHKUnit;
using Options = qz::QZHKStatisticsOptions;

constexpr std::array usageTypes{Type::applicationUsage, Type::websiteUsage, Type::categoryUsage};

double seconds(std::chrono::microseconds duration) { return std::chrono::duration<double>(duration).count(); }

/// Whether a type asks for walking alone or for running alone.
bool isWalkOrRunAlone(const AutomaticTaskType& type) {
  return type.type.healthType() == HealthType::runOrWalk &&
         type.speeds.contains(TypeSpeed::walk) != type.speeds.contains(TypeSpeed::run);
}

/// The time that samples in order of their start cover in a span, as spans that do not meet.
std::vector<qz::QZHKSpan> covered(const std::vector<qz::QZHKSample>& samples, const qz::QZHKSpan& span) {
  std::vector<qz::QZHKSpan> all;
  for (const qz::QZHKSample& sample : samples) {
    const qz::QZHKSpan one{std::max(sample.start, span.from), std::min(sample.end, span.to)};
    if (!all.empty() && one.from <= all.back().to)
      all.back().to = std::max(all.back().to, one.to);
    else
      all.push_back(one);
  }
  return all;
}

}  // namespace

HealthMeasuring::HealthMeasuring(const qz::QZHealthStore& health, AutomaticTaskType type,
                                 std::optional<qz::UniqueID> task, TaskCalendar calendar,
                                 std::set<qz::UniqueID> withdrawn)
    : health_(health), type_(std::move(type)), calendar_(std::move(calendar)) {
  predicate_.excluded = std::move(withdrawn);
  if (type_.dataSource.value_or(defaultDataSource(type_.type)) == DataSource::currentTask) {
    predicate_.task = task;
    hasNoTask_ = !task;
  }
  const auto healthType = type_.type.healthType();
  if (!healthType) return;
  if (healthType->canSelectWorkoutTypes() && type_.extra) predicate_.workoutTypes = type_.extra->workoutTypes;
  if (healthType == HealthType::sleep || healthType == HealthType::inBed)
    predicate_.sleepValues = sleepValues(*healthType, type_.speeds);
}

std::vector<Type> HealthMeasuring::readTypes(const AutomaticTaskType& type) {
  if (const auto health = type.type.healthType()) return health->healthKitReadTypes(type.unit, type.speeds);
  if (type.type.kind() == AutomaticTaskType::TaskType::Kind::screenTime) return {usageTypes.begin(), usageTypes.end()};
  return {};
}

std::string HealthMeasuring::yardstick() const {
  const DataSource source = type_.dataSource.value_or(defaultDataSource(type_.type));
  std::string word =
      fmt::format("{}/{}/{}/{}", type_.type.rawValue(), type_.unit ? rawValue(*type_.unit) : std::string_view(),
                  type_.speeds.storedText(), rawValue(source));
  if (type_.extra)
    for (const auto workout : type_.extra->workoutTypes) word += fmt::format("/{}", qz::rawValue(workout));
  return word;
}

bool HealthMeasuring::holds(const qz::QZHKSample& sample) const {
  const std::vector<Type> types = readTypes();
  return std::ranges::find(types, sample.objectType) != types.end() && predicate_.matches(sample) &&
         !health_.known(std::span(&sample.identifier, 1)).empty();
}

PeriodMeasurement HealthMeasuring::measure(const TaskFrequencyPeriod& period) const {
  if (hasNoTask_) return {};
  const qz::QZHKSpan time = span(period.startDate, period.finishDate);
  switch (measurementFamily(type_).value()) {
    case MeasurementFamily::amount: return isWalkOrRunAlone(type_) ? walkedOrRun(time) : amount(time);
    case MeasurementFamily::samples: return numberOfSamples(time);
    case MeasurementFamily::rings: return rings(period);
    case MeasurementFamily::bedtime: return bedtimes(period);
    case MeasurementFamily::balance: return balance(time);
    case MeasurementFamily::screenTime: break;
  }
  return screenTime(time);
}

std::pair<qz::YYYYMMDD, qz::YYYYMMDD> HealthMeasuring::daysOf(const qz::QZHKChanges::Reach& reach) const {
  const std::chrono::hours lead = isOfNights() ? nightLead : std::chrono::hours(0);
  return {calendar_.day(reach.earliest + lead), calendar_.day(reach.latest + lead)};
}

bool HealthMeasuring::isOfNights() const {
  const auto health = type_.type.healthType();
  return health == HealthType::sleep || health == HealthType::inBed || health == HealthType::bedtime;
}

qz::QZHKSpan HealthMeasuring::span(qz::YYYYMMDD first, qz::YYYYMMDD last) const {
  const std::chrono::hours lead = isOfNights() ? nightLead : std::chrono::hours(0);
  return {calendar_.beginning(first) - lead, calendar_.beginning(last.nextDay()) - lead};
}

qz::QZHKSampleQuery HealthMeasuring::query(Type type, const qz::QZHKSpan& span) const {
  return {.objectType = type, .span = span, .predicate = predicate_};
}

std::optional<double> HealthMeasuring::sum(Type type, Unit unit, const qz::QZHKSpan& span) const {
  return health_.statistics({.samples = query(type, span), .unit = unit, .options = Options::cumulativeSum}).sum;
}

PeriodMeasurement HealthMeasuring::amount(const qz::QZHKSpan& span) const {
  const auto figures = health_.statistics({.samples = query(readTypes(type_).front(), span),
                                           .unit = type_.healthKitCountUnit(),
                                           .options = type_.healthKitStatisticsOptions()});
  if (figures.sum) return {.hasData = true, .amount = *figures.sum};
  if (!figures.duration) return {};
  const double time = seconds(*figures.duration);
  return {.hasData = true, .amount = type_.isTimed() ? time : type_.unit->convertFromTimeInterval(time)};
}

PeriodMeasurement HealthMeasuring::walkedOrRun(const qz::QZHKSpan& span) const {
  PeriodMeasurement measured = amount(span);
  if (!measured.hasData) return measured;
  qz::QZHKSampleQuery runs = query(Type::workout, span);
  runs.predicate.workoutTypes = {qz::QZHKWorkoutActivityType::running};
  double run = 0;
  for (const qz::QZHKSpan& one : covered(health_.samples(runs), span)) run += amount(one).amount;
  measured.amount = type_.speeds.contains(TypeSpeed::run) ? run : std::max(measured.amount - run, 0.0);
  return measured;
}

PeriodMeasurement HealthMeasuring::numberOfSamples(const qz::QZHKSpan& span) const {
  const auto samples = health_.samples(query(readTypes(type_).front(), span));
  const auto number =
      std::ranges::count_if(samples, [&](const qz::QZHKSample& sample) { return span.contains(sample.start); });
  return {.hasData = number > 0, .amount = static_cast<double>(number)};
}

PeriodMeasurement HealthMeasuring::rings(const TaskFrequencyPeriod& period) const {
  std::vector<std::optional<qz::QZHKActivitySummary>> days;
  for (qz::YYYYMMDD day = period.startDate; day <= period.finishDate; day = day.nextDay())
    days.push_back(health_.activitySummary(span(day, day)));
  return measuredRings(days);
}

PeriodMeasurement HealthMeasuring::bedtimes(const TaskFrequencyPeriod& period) const {
  std::vector<std::optional<SleepNight>> nights;
  for (qz::YYYYMMDD day = period.startDate; day <= period.finishDate; day = day.nextDay())
    nights.push_back(sleepNight(health_.samples(query(Type::sleepAnalysis, span(day, day)))));
  return measuredBedtimes(type_, nights, calendar_.timeZone);
}

PeriodMeasurement HealthMeasuring::balance(const qz::QZHKSpan& span) const {
  const TypeUnit unit = type_.unit.value_or(TypeUnit::calories);
  const auto energy = [&](Type type) { return sum(type, unit.healthKit(), span).value_or(0); };
  return measuredBalance(type_, {.unit = unit,
                                 .activeEnergy = energy(Type::activeEnergyBurned),
                                 .restingEnergy = energy(Type::basalEnergyBurned),
                                 .dietaryEnergy = energy(Type::dietaryEnergyConsumed)});
}

PeriodMeasurement HealthMeasuring::screenTime(const qz::QZHKSpan& span) const {
  const auto settings = type_.extra ? type_.extra->screenTimeSettings : std::nullopt;
  const auto selection = settings ? settings->familyActivitySelection() : std::nullopt;
  if (!selection || !type_.unit) return {};
  std::vector<qz::QZHKSample> samples;
  for (const Type type : usageTypes) {
    qz::QZHKSampleQuery usage = query(type, span);
    usage.predicate.sources = selectedSources(*selection, type);
    // No source asks for all of them.
    if (usage.predicate.sources.empty()) continue;
    std::ranges::move(health_.samples(usage), std::back_inserter(samples));
  }
  return {.hasData = !samples.empty(), .amount = type_.unit->convertFromTimeInterval(usedSeconds(span, samples))};
}

}  // namespace habitra
