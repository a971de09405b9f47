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

std::size_t slotHash(const TimeZone& timeZone, std::int64_t value) {
  return static_cast<std::size_t>(value) + (std::hash<TimeZone>()(timeZone) >> 4) * 0x9e37'79b1;
}

/// How far around a moment an entry reaches at most, so that no sum of its moments leaves their range.
constexpr std::chrono::days longestReach(36'525);

/// Whether an entry can serve a moment: it has room around it, and it is known when its offset changes.
bool isServedByEntries(Moment date) {
  static_assert(ZoneRules::endOfSpans < Moment::max() - 2 * longestReach);
  return date > Moment::min() + 2 * longestReach && date < ZoneRules::endOfSpans;
}

QZDateTimeCache::FromDateEntry entryAround(Moment date, const TimeZone& timeZone) {
  const ZoneRules::Span span = ZoneRules::of(timeZone).span(date);
  const std::int64_t shift = span.offset * microsecondsPerSecond;
  const std::int64_t number = day_number::floorDivide(date.time_since_epoch().count() + shift, microsecondsPerDay);
  return {timeZone,
          std::max<Moment>(span.from, date - longestReach),
          std::min<Moment>(span.until, date + longestReach),
          Moment(std::chrono::microseconds(number * microsecondsPerDay - shift)),
          {YYYYMMDD::fromDayNumber(number)}};
}

/// The entry that serves a moment, from the cache or new. REQUIRES: isServedByEntries(date).
const QZDateTimeCache::FromDateEntry& entryFor(Moment date, const TimeZone& timeZone) {
  auto& cache = QZDateTimeCache::shared().yyyymmddFromDate;
  // Two slots for 2^43 microseconds, about 100 days: one for the span that reaches into them and one for the span that
  // begins within, so that moments before and after a change of clocks do not push each other out.
  const std::int64_t block = date.time_since_epoch().count() >> 43;
  const std::size_t hash = slotHash(timeZone, 2 * block);
  for (const std::size_t slot : {hash, hash + 1}) {
    const auto* entry = cache.find(slot);
    if (entry != nullptr && entry->from <= date && date < entry->until && entry->timeZone == timeZone) return *entry;
  }
  const QZDateTimeCache::FromDateEntry entry = entryAround(date, timeZone);
  const bool beginsWithin = entry.from.time_since_epoch().count() >> 43 == block;
  return cache.store(beginsWithin ? hash + 1 : hash, entry);
}

}  // namespace

YYYYMMDD YYYYMMDD::calculateUncached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
  const std::int64_t local = seconds + timeZone.offset(date).count();
  return fromDayNumber(day_number::floorDivide(local - shiftOf(startOfDay), HHMMSS::secondsPerDay));
}

YYYYMMDD YYYYMMDD::calculateCached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone) {
  if (!isServedByEntries(date)) return calculateUncached(startOfDay, date, timeZone);
  const QZDateTimeCache::FromDateEntry& entry = entryFor(date, timeZone);
  const std::int64_t sinceDayBegan = (date - entry.midnight).count() - shiftOf(startOfDay) * microsecondsPerSecond;
  const YYYYMMDD& day = entry.container.yyyymmdd;
  return fromDayNumber(day.dayNumber() + day_number::floorDivide(sinceDayBegan, microsecondsPerDay));
}

Moment YYYYMMDD::dateAt(const HHMMSS& startOfDay, const TimeZone& timeZone) const {
  auto& cache = QZDateTimeCache::shared().yyyymmddDateAtCache;
  const std::int64_t time = startOfDay.intValue();
  const std::size_t hash = slotHash(timeZone, number_ + time * 31);
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
