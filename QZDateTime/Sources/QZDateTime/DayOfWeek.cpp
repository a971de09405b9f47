#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/QZDateTimeCache.h>

namespace qz {

DaysOfWeek DayOfWeek::every() { return {sunday, monday, tuesday, wednesday, thursday, friday, saturday}; }

const std::array<DayOfWeek, 7>& DayOfWeek::every(DayOfWeek first) {
  return QZDateTimeCache::shared().everyDayCache.find(first).days;
}

DaysOfWeek DayOfWeek::days(std::span<const DayOfWeek> list) {
  DaysOfWeek set;
  for (const DayOfWeek day : list) set.insert(day);
  return set;
}

DayOfWeek DayOfWeek::defaultFirst() { return QZDateTimeCache::symbolsFormatter().firstDayOfWeek(); }

std::string DayOfWeek::title() const {
  return QZDateTimeCache::symbolsFormatter().symbol(*this, DateFormatter::Width::full);
}

std::string DayOfWeek::shortTitle() const {
  return QZDateTimeCache::symbolsFormatter().symbol(*this, DateFormatter::Width::abbreviated);
}

std::string DayOfWeek::veryShortTitle() const {
  return QZDateTimeCache::symbolsFormatter().symbol(*this, DateFormatter::Width::narrow);
}

std::vector<DayOfWeek> DaysOfWeek::days() const { return std::vector<DayOfWeek>(begin(), end()); }

}  // namespace qz
