#include <HabitraCore/AutomaticTaskType/SleepNight.h>
#include <QZDateTime/HHMMSS.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace habitra {
namespace {

using Value = qz::QZHKSleepValue;

const std::set<Value> asleepValues{Value::asleep, Value::core, Value::deep, Value::rem};

/// Stretches that belong together.
struct Sleep {
  qz::Moment begin;
  qz::Moment end;
  SleepNight night;
};

void keepEarlier(std::optional<qz::Moment>& kept, qz::Moment moment) { kept = std::min(kept.value_or(moment), moment); }
void keepLater(std::optional<qz::Moment>& kept, qz::Moment moment) { kept = std::max(kept.value_or(moment), moment); }

void include(Sleep& sleep, const qz::QZHKSample& sample) {
  sleep.end = std::max(sleep.end, sample.end);
  keepEarlier(sleep.night.inBed, sample.start);
  keepLater(sleep.night.outOfBed, sample.end);
  if (!asleepValues.contains(*sample.sleepValue())) return;
  keepEarlier(sleep.night.asleep, sample.start);
  keepLater(sleep.night.awake, sample.end);
}

}  // namespace

std::optional<SleepNight> sleepNight(std::span<const qz::QZHKSample> samples) {
  std::optional<Sleep> longest;
  std::optional<Sleep> current;
  const auto finish = [&] {
    if (current && (!longest || longest->end - longest->begin < current->end - current->begin)) longest = current;
  };
  for (const qz::QZHKSample& sample : samples) {
    if (!sample.sleepValue()) continue;
    if (!current || sample.start - current->end > longestWaking) {
      finish();
      current = Sleep{.begin = sample.start, .end = sample.end, .night = {}};
    }
    include(*current, sample);
  }
  finish();
  return longest ? std::optional(longest->night) : std::nullopt;
}

std::optional<qz::Moment> momentOf(const SleepNight& night, TypeSpeeds speeds) {
  if (speeds.contains(TypeSpeed::awakeBefore) || speeds.contains(TypeSpeed::awakeAfter)) return night.awake;
  if (speeds.contains(TypeSpeed::inBedBefore) || speeds.contains(TypeSpeed::inBedAfter)) return night.inBed;
  if (speeds.contains(TypeSpeed::outOfBedBefore) || speeds.contains(TypeSpeed::outOfBedAfter)) return night.outOfBed;
  return night.asleep;
}

bool isKept(qz::Moment moment, double secondsOfDay, TypeSpeeds speeds, const qz::TimeZone& timeZone) {
  constexpr auto day = static_cast<double>(qz::HHMMSS::secondsPerDay);
  const auto time = static_cast<double>(qz::HHMMSS::now(timeZone, moment).intValue());
  // Between half a day before and half a day after.
  const double late = std::remainder(time - secondsOfDay, day);
  const bool asksForAfter = speeds.contains(TypeSpeed::asleepAfter) || speeds.contains(TypeSpeed::awakeAfter) ||
                            speeds.contains(TypeSpeed::inBedAfter) || speeds.contains(TypeSpeed::outOfBedAfter);
  return asksForAfter ? late >= 0 : late <= 0;
}

std::set<Value> sleepValues(HealthType type, TypeSpeeds speeds) {
  if (type == HealthType::inBed) speeds = {TypeSpeed::inBed};
  if (speeds.sortedSleepOptions().empty()) speeds = type.defaultSpeeds();
  std::set<Value> values;
  const auto choose = [&](TypeSpeed speed, const std::set<Value>& chosen) {
    if (speeds.contains(speed)) values.insert(chosen.begin(), chosen.end());
  };
  choose(TypeSpeed::sleepAsleep, asleepValues);
  choose(TypeSpeed::sleepCore, {Value::core});
  choose(TypeSpeed::sleepDeep, {Value::deep});
  choose(TypeSpeed::sleepREM, {Value::rem});
  choose(TypeSpeed::inBed, {Value::inBed, Value::asleep, Value::awake, Value::core, Value::deep, Value::rem});
  return values;
}

}  // namespace habitra
