#include <HabitraCore/AutomaticTaskType/PeriodMeasurement.h>
#include <QZDateTime/HHMMSS.h>

#include <algorithm>

namespace habitra {
namespace {

using Kind = AutomaticTaskType::TaskType::Kind;
using Deficits = AutomaticTaskTypeEnergyDeficitProcessor;

double mean(const qz::QZHKActivitySummary& rings) {
  return (std::min(rings.move.share(), 1.0) + std::min(rings.exercise.share(), 1.0) +
          std::min(rings.stand.share(), 1.0)) /
         3;
}

}  // namespace

std::optional<MeasurementFamily> measurementFamily(const AutomaticTaskType& type) {
  if (type.type.kind() == Kind::timer) return std::nullopt;
  if (type.type.kind() == Kind::screenTime) return MeasurementFamily::screenTime;
  // Only what our own timer wrote counts, and the entries of its runs say that already.
  if (type.isTimed() && type.dataSource.value_or(defaultDataSource(type.type)) == DataSource::currentTask)
    return std::nullopt;
  const HealthType health = type.type.healthType().value();
  if (health == HealthType::activity) return MeasurementFamily::rings;
  if (health == HealthType::bedtime) return MeasurementFamily::bedtime;
  if (health == HealthType::energyDeficit) return MeasurementFamily::balance;
  const bool needsNoQuantity = health.quantitySelectionStyle() != QuantitySelectionStyle::required;
  if (!health.isQuantityBased() || (needsNoQuantity && !(type.unit && type.quantity > 0)))
    return MeasurementFamily::samples;
  return MeasurementFamily::amount;
}

double neededAmount(const AutomaticTaskType& type, std::int64_t expectedUnits, bool isSingleDay) {
  const auto family = measurementFamily(type);
  if (!family) return 0;
  switch (*family) {
    case MeasurementFamily::amount:
    case MeasurementFamily::screenTime: return type.unit ? type.measure().target : 0;
    case MeasurementFamily::rings: return isSingleDay ? 1 : static_cast<double>(expectedUnits);
    case MeasurementFamily::samples:
    case MeasurementFamily::bedtime: return static_cast<double>(expectedUnits);
    case MeasurementFamily::balance: break;
  }
  return 0;
}

PeriodMeasurement measuredRings(std::span<const std::optional<qz::QZHKActivitySummary>> days) {
  PeriodMeasurement measured;
  for (const auto& day : days) {
    if (!day) continue;
    measured.hasData = true;
    if (days.size() == 1)
      measured.amount = mean(*day);
    else if (day->isComplete())
      ++measured.amount;
  }
  return measured;
}

PeriodMeasurement measuredBalance(const AutomaticTaskType& type, const EnergyDeficit& deficit) {
  const auto direction =
      type.speeds.contains(TypeSpeed::lessThan) ? Deficits::Direction::lessThan : Deficits::Direction::greaterThan;
  return {.hasData = deficit.totalInput() != 0 || deficit.totalOutput() != 0,
          .amount = deficit.total(),
          .isReached = Deficits::qualifies(direction, type.quantity, deficit, false)};
}

PeriodMeasurement measuredBedtimes(const AutomaticTaskType& type, std::span<const std::optional<SleepNight>> nights,
                                   const qz::TimeZone& timeZone) {
  PeriodMeasurement measured;
  std::int64_t kept = 0;
  for (const auto& night : nights) {
    const auto moment = night ? momentOf(*night, type.speeds) : std::nullopt;
    if (!moment) continue;
    measured.hasData = true;
    if (isKept(*moment, type.quantity, type.speeds, timeZone)) ++kept;
    measured.amount = static_cast<double>(qz::HHMMSS::now(timeZone, *moment).intValue());
  }
  if (nights.size() == 1)
    measured.isReached = kept > 0;
  else
    measured.amount = static_cast<double>(kept);
  return measured;
}

}  // namespace habitra
