#include <QZDateTime/QZDateTimeCache.h>

namespace qz {

constinit QZDateTimeCache QZDateTimeCache::shared_;

void QZDateTimeCache::evictAll() {
  yyyymmDaysInMonthCache.evict();
  yyyymmddDistanceCache.evict();
  yyyymmddDayOfWeekCache.evict();
  yyyymmddPrevDateCache.evict();
  yyyymmddNextDateCache.evict();
  yyyymmddDateAtCache.evict();
  yyyymmddAddCache.evict();
  yyyymmddFromDate.evict();
}

const DateFormatter& QZDateTimeCache::titleWithYearFormatter() {
  static const DateFormatter formatter(DateFormatter::Style::titleWithYear);
  return formatter;
}

const DateFormatter& QZDateTimeCache::shortTitleWithYearFormatter() {
  static const DateFormatter formatter(DateFormatter::Style::shortTitleWithYear);
  return formatter;
}

const DateFormatter& QZDateTimeCache::localizedYearFormatter() {
  static const DateFormatter formatter(DateFormatter::Style::localizedYear);
  return formatter;
}

const DateFormatter& QZDateTimeCache::symbolsFormatter() {
  static const DateFormatter formatter(DateFormatter::Style::symbols);
  return formatter;
}

}  // namespace qz
