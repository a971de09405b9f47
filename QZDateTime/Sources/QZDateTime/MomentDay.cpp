// The way between moments and days: YYYYMMDD's functions that take a time zone.

#include <QZDateTime/Calendar.h>
#include <QZDateTime/QZDateTimeCache.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZDateTime/ZoneRules.h>

#include <algorithm>

namespace qz {
namespace {

constexpr std::int64_t microsecondsPerSecond = 1'000'000;
constexpr std::int64_t microsecondsPerDay = HHMMSS::secondsPerDay * microsecondsPerSecond;

/// How much later than midnight of its own date a day begins, in seconds: negative when the start of day is after
/// midday, for then the day begins on the date before.
std::int64_t shiftOf(const HHMMSS& startOfDay) {
  const std::int64_t seconds = startOfDay.intValue();
  return startOfDay > HHMMSS::midday ? seconds - HHMMSS::secondsPerDay : seconds;
}

/// Mixes what tells apart keys of different zones and starts of day into the hash of a moment or a day.
std::size_t slotHash(const TimeZone& timeZone, std::int64_t seconds, std::int64_t value) {
  return static_cast<std::size_t>(value) + (std::hash<TimeZone>()(timeZone) >> 4) * 0x9e37'79b1 +
         static_cast<std::size_t>(seconds) * 0x85eb'ca6b;
}

/// The span between two changes of the zone's clocks that holds a moment.
const QZDateTimeCache::OffsetEntry& offsetEntry(const TimeZone& timeZone, Moment date) {
  auto& cache = QZDateTimeCache::shared().zoneOffsetCache;
  // One slot for 2^43 microseconds, about 100 days: clocks change about twice a year.
  const std::size_t hash = slotHash(timeZone, 0, date.time_since_epoch().count() >> 43);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->timeZone == timeZone && entry->from <= date && date < entry->until) return *entry;
  return cache.store(hash, ZoneRules::of(timeZone).offsetSpan(timeZone, date));
}

/// The day of a moment with all moments around it that share it until clocks or the day change.
QZDateTimeCache::FromDateEntry dayWithSpan(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone) {
  const QZDateTimeCache::OffsetEntry& clocks = offsetEntry(timeZone, date);
  const std::int64_t shift = (clocks.offset - shiftOf(startOfDay)) * microsecondsPerSecond;
  const std::int64_t number =
      day_number::floorDivide(checkedAdd(date.time_since_epoch().count(), shift), microsecondsPerDay);
  const Moment begins(std::chrono::microseconds(checkedSubtract(checkedMultiply(number, microsecondsPerDay), shift)));
  const Moment ends = begins + std::chrono::microseconds(microsecondsPerDay);
  return {timeZone,
          startOfDay.intValue(),
          std::max(begins, clocks.from),
          std::min(ends, clocks.until),
          {YYYYMMDD::fromDayNumber(number)}};
}

/// Whether the days around a moment can be counted in microseconds: all but the outermost of its 292,000 years.
bool hasRoomAround(Moment date) {
  return date > Moment::min() + std::chrono::days(4) && date < Moment::max() - std::chrono::days(4);
}

}  // namespace

YYYYMMDD YYYYMMDD::calculateUncached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
  const std::int64_t local = seconds + timeZone.offset(date).count();
  return fromDayNumber(day_number::floorDivide(local - shiftOf(startOfDay), HHMMSS::secondsPerDay));
}

YYYYMMDD YYYYMMDD::calculateCached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone) {
  auto& cache = QZDateTimeCache::shared().yyyymmddFromDate;
  // One slot for 2^34 microseconds, 4.8 hours: most lie within one day, and neighbours do not push each other out.
  const std::size_t hash = slotHash(timeZone, startOfDay.intValue(), date.time_since_epoch().count() >> 34);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->from <= date && date < entry->until && entry->timeZone == timeZone &&
      entry->startOfDay == startOfDay.intValue())
    return entry->container.yyyymmdd;
  if (!hasRoomAround(date)) return calculateUncached(startOfDay, date, timeZone);
  const QZDateTimeCache::FromDateEntry found = dayWithSpan(startOfDay, date, timeZone);
  cache.store(hash, found);
  return found.container.yyyymmdd;
}

Moment YYYYMMDD::dateAt(const HHMMSS& startOfDay, const TimeZone& timeZone) const {
  auto& cache = QZDateTimeCache::shared().yyyymmddDateAtCache;
  const std::int64_t time = startOfDay.intValue();
  const std::size_t hash = slotHash(timeZone, time, number_);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->day == *this && entry->time == time && entry->timeZone == timeZone) return entry->date;
  const Moment date = Calendar(timeZone).date(*this, startOfDay);
  cache.store(hash, {timeZone, *this, time, date});
  return date;
}

Moment YYYYMMDD::dateAt(const HHMMSS& startOfDay, std::int64_t h, std::int64_t m, std::int64_t s,
                        const TimeZone& timeZone) const {
  const HHMMSS time(h, m, s);
  if (startOfDay > HHMMSS::midday) return (time >= startOfDay ? previousDay() : *this).dateAt(time, timeZone);
  return (time < startOfDay ? nextDay() : *this).dateAt(time, timeZone);
}

Moment YYYYMMDD::beginning(const HHMMSS& startOfDay, const TimeZone& timeZone) const {
  return dateAt(startOfDay, startOfDay.h(), startOfDay.m(), startOfDay.s(), timeZone);
}

}  // namespace qz
