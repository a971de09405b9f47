#include <QZDateTime/Calendar.h>
#include <QZDateTime/ZoneRules.h>
#include <QZKit/Checked.h>

namespace qz {

DateComponents Calendar::components(Moment date) const {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
  const std::int64_t local = seconds + timeZone_.offset(date).count();
  const std::int64_t time = day_number::floorRemainder(local, HHMMSS::secondsPerDay);
  return {YYYYMMDD::fromDayNumber(day_number::floorDivide(local, HHMMSS::secondsPerDay)),
          HHMMSS(time / 3600, time / 60 % 60, time % 60)};
}

Moment Calendar::date(const YYYYMMDD& day, const HHMMSS& time) const {
  return ZoneRules::of(timeZone_).date(day, time);
}

YYYYMMDD Calendar::add(const YYYYMMDD& day, std::int64_t numDays) const {
  return YYYYMMDD::fromDayNumber(checkedAdd(day.dayNumber(), numDays));
}

}  // namespace qz
