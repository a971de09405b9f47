#include <QZDateTime/Calendar.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/ZoneRules.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace qz {
namespace {

/// REQUIRES: 0 <= seconds < 86,400.
HHMMSS ofSeconds(std::int64_t seconds) { return HHMMSS(seconds / 3600, seconds / 60 % 60, seconds % 60); }

HHMMSS addSeconds(const HHMMSS& time, std::int64_t seconds, bool canWrap) {
  const std::int64_t sum = checkedAdd(time.intValue(), seconds);
  if (canWrap) return ofSeconds(day_number::floorRemainder(sum, HHMMSS::secondsPerDay));
  return ofSeconds(std::clamp<std::int64_t>(sum, 0, HHMMSS::secondsPerDay - 1));
}

/// The moment at which `time` falls on a date; none on a date that the zone's clocks left out altogether.
std::optional<Moment> occurrenceOn(const YYYYMMDD& day, const HHMMSS& time, const Calendar& calendar) {
  const Moment date = calendar.date(day, time);
  if (calendar.components(date).date == day) return date;
  // Clocks jumped from before `time` into the next date; the date counts when it had a midnight, or what followed it.
  const Moment first = calendar.date(day, HHMMSS::midnight);
  if (calendar.components(first).date != day) return std::nullopt;
  return date;
}

/// The first day whose occurrence can be at or after a moment: the day before, for its occurrence can lie beyond
/// midnight when clocks jump across it.
YYYYMMDD firstDayToTry(Moment from, const Calendar& calendar) {
  const std::int64_t dayBefore = calendar.components(from).date.dayNumber() - 1;
  return YYYYMMDD::fromDayNumber(std::max(dayBefore, -ZoneRules::momentDays));
}

}  // namespace

HHMMSS HHMMSS::now(const TimeZone& timeZone, Moment now) { return Calendar(timeZone).components(now).time; }

HHMMSS HHMMSS::add(std::int64_t h, std::int64_t m, std::int64_t s, bool canWrap) const {
  const std::int64_t minutes = checkedAdd(checkedMultiply<std::int64_t>(h, 60), m);
  return addSeconds(*this, checkedAdd(checkedMultiply<std::int64_t>(minutes, 60), s), canWrap);
}

HHMMSS HHMMSS::add(double timeInterval, bool canWrap) const {
  return addSeconds(*this, checkedCount(timeInterval), canWrap);
}

bool HHMMSS::isWithin(std::int64_t hours, const HHMMSS& of, bool inclusive) const {
  const std::int64_t apart = std::abs(intValue() - of.intValue());
  const std::int64_t shortWay = std::min(apart, secondsPerDay - apart);
  const std::int64_t limit = checkedMultiply<std::int64_t>(hours, 3600);
  return inclusive ? shortWay <= limit : shortWay < limit;
}

HHMMSS HHMMSS::roundToNearestInterval(std::chrono::seconds duration) const {
  const std::int64_t interval = duration.count();
  if (interval < 1) trap("interval to round to is below a second", interval);
  const std::int64_t below = intValue() / interval * interval;
  // Half-way goes up; written so that the longest interval does not overflow.
  const std::int64_t rest = intValue() - below;
  const std::int64_t nearest = rest >= interval - rest ? checkedAdd(below, interval) : below;
  return ofSeconds(nearest % secondsPerDay);
}

Moment HHMMSS::nextOccurrence(Moment from, const TimeZone& timeZone) const {
  const Calendar calendar(timeZone);
  for (YYYYMMDD day = firstDayToTry(from, calendar);; day = day.nextDay()) {
    const std::optional<Moment> date = occurrenceOn(day, *this, calendar);
    if (date && *date > from) return *date;
  }
}

std::vector<Moment> HHMMSS::occurrences(Moment from, Moment to, const TimeZone& timeZone) const {
  std::vector<Moment> result;
  if (from >= to) return result;
  const Calendar calendar(timeZone);
  const YYYYMMDD lastDay = YYYYMMDD::fromDayNumber(ZoneRules::momentDays);
  for (YYYYMMDD day = firstDayToTry(from, calendar); day <= lastDay; day = day.nextDay()) {
    const std::optional<Moment> date = occurrenceOn(day, *this, calendar);
    if (date && *date >= to) break;
    if (date && *date >= from) result.push_back(*date);
  }
  return result;
}

std::optional<HHMMSS> HHMMSS::median(std::span<const HHMMSS> times) {
  if (times.empty()) return std::nullopt;
  std::vector<HHMMSS> sorted(times.begin(), times.end());
  std::sort(sorted.begin(), sorted.end());
  const std::size_t middle = sorted.size() / 2;
  if (sorted.size() % 2 == 1) return sorted[middle];
  return ofSeconds((sorted[middle - 1].intValue() + sorted[middle].intValue()) / 2);
}

std::string HHMMSS::debugDescription() const {
  std::array<char, 72> text;
  const int length = std::snprintf(text.data(), text.size(), "%02" PRId64 ":%02" PRId64 ":%02" PRId64, h_, m_, s_);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace qz
