#include <QZDateTime/Calendar.h>
#include <QZDateTime/QZDateTimeCache.h>
#include <QZDateTime/YYYYMMDD.h>

#include <array>
#include <cinttypes>
#include <cstdio>

namespace qz {
namespace {

std::size_t slotHash(const YYYYMMDD& day) { return std::hash<YYYYMMDD>()(day) * 0x9e37'79b9'7f4a'7c15u >> 32; }

}  // namespace

YYYYMMDD YYYYMMDD::fromDayNumber(std::int64_t number) {
  if (day_number::isNearNumber(number)) {
    const day_number::Civil civil = day_number::nearCivil(number);
    const std::int64_t left = day_number::lengthOfMonth(civil.y, civil.m) - civil.d;
    return YYYYMMDD(civil.y, civil.m, civil.d, static_cast<std::int32_t>(number), static_cast<std::int32_t>(left));
  }
  const day_number::Civil civil = day_number::anyCivil(number);
  return YYYYMMDD(civil.y, civil.m, civil.d);
}

YYYYMMDD YYYYMMDD::nextDayUsingCalendar() const { return fromDayNumber(checkedAdd<std::int64_t>(dayNumber(), 1)); }

YYYYMMDD YYYYMMDD::addUsingCalendar(const Calendar& calendar, std::int64_t numDays) const {
  return calendar.add(*this, numDays);
}

YYYYMMDD YYYYMMDD::farNextDay() const {
  auto& cache = QZDateTimeCache::shared().yyyymmddNextDateCache;
  const std::size_t hash = slotHash(*this);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->day == *this) return entry->container.yyyymmdd;
  return cache.store(hash, {*this, {nextDayUsingCalendar()}}).container.yyyymmdd;
}

YYYYMMDD YYYYMMDD::farPreviousDay() const {
  auto& cache = QZDateTimeCache::shared().yyyymmddPrevDateCache;
  const std::size_t hash = slotHash(*this);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->day == *this) return entry->container.yyyymmdd;
  const YYYYMMDD day = fromDayNumber(checkedSubtract<std::int64_t>(dayNumber(), 1));
  return cache.store(hash, {*this, {day}}).container.yyyymmdd;
}

YYYYMMDD YYYYMMDD::addBeyondMonth(std::int64_t numDays) const {
  const std::int64_t sum = checkedAdd(dayNumber(), numDays);
  if (!day_number::isNearNumber(sum)) return fromDayNumber(sum);
  const auto number = static_cast<std::int32_t>(sum);
  auto& cache = QZDateTimeCache::shared().yyyymmddAddCache;
  if (const auto word = cache.find(number)) return QZDateTimeCache::unpacked(*word, number).yyyymmdd;
  const YYYYMMDD day = fromDayNumber(sum);
  if (QZDateTimeCache::fitsWord(day)) cache.store(number, QZDateTimeCache::packed(day));
  return day;
}

DayOfWeek YYYYMMDD::farDayOfWeek() const {
  auto& cache = QZDateTimeCache::shared().yyyymmddDayOfWeekCache;
  const std::size_t hash = slotHash(*this);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->day == *this) return entry->dayOfWeek;
  const DayOfWeek dayOfWeek = DayOfWeek(DayOfWeek::thursday).add(dayNumber());  // 1970-01-01 was a Thursday
  return cache.store(hash, {*this, dayOfWeek}).dayOfWeek;
}

std::int64_t YYYYMMDD::farDistance(const YYYYMMDD& to) const {
  auto& cache = QZDateTimeCache::shared().yyyymmddDistanceCache;
  const std::size_t hash = slotHash(*this) * 31 + slotHash(to);
  const auto* entry = cache.find(hash);
  if (entry != nullptr && entry->day == *this && entry->to == to) return entry->distance;
  const std::int64_t distance = checkedSubtract(to.dayNumber(), dayNumber());
  return cache.store(hash, {*this, to, distance}).distance;
}

YYYYMMDD YYYYMMDD::startOfWeek(DayOfWeek firstDay) const {
  return add(-((dayOfWeek().rawValue() - firstDay.rawValue() + 7) % 7));
}

YYYYMMDD YYYYMMDD::endOfWeek(DayOfWeek firstDay) const { return startOfWeek(firstDay).add(6); }

YYYYMMDD YYYYMMDD::startOfFortnight(DayOfWeek firstDayOfWeek, const YYYYMMDD& referenceDate) const {
  const std::int64_t days = referenceDate.startOfWeek(firstDayOfWeek).distance(*this);
  return add(-day_number::floorRemainder(days, 14));
}

YYYYMMDD YYYYMMDD::endOfFortnight(DayOfWeek firstDayOfWeek, const YYYYMMDD& referenceDate) const {
  return startOfFortnight(firstDayOfWeek, referenceDate).add(13);
}

std::int64_t YYYYMMDD::numberOfDaysRemainingThisWeek(DayOfWeek firstDay, bool include) const {
  return distance(endOfWeek(firstDay), include);
}

std::int64_t YYYYMMDD::numberOfDaysRemainingThisFortnight(DayOfWeek firstDayOfWeek, bool include,
                                                          const YYYYMMDD& referenceDate) const {
  return distance(endOfFortnight(firstDayOfWeek, referenceDate), include);
}

std::int64_t YYYYMMDD::numberOfDaysRemainingThisMonth(bool include) const {
  return distance(add(0).yyyymm().lastDay(), include);
}

std::int64_t YYYYMMDD::numberOfDaysRemainingThisYear(bool include) const {
  return distance(YYYYMMDD(add(0).y(), 12, 31), include);
}

std::string YYYYMMDD::string() const { return QZDateTimeCache::shortTitleWithYearFormatter().string(*this); }

std::string YYYYMMDD::debugDescription() const {
  std::array<char, 72> text;  // three 64-bit numbers with signs, two hyphens
  const int length = std::snprintf(text.data(), text.size(), "%04" PRId64 "-%02" PRId64 "-%02" PRId64, y_, m_, d_);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace qz
