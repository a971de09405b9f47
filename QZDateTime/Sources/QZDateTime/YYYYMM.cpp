#include <QZDateTime/QZDateTimeCache.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>

#include <array>
#include <cinttypes>
#include <cstdio>

namespace qz {
namespace {

/// Months since January of year 0.
std::int64_t monthNumber(const YYYYMM& month) {
  return checkedAdd(checkedMultiply<std::int64_t>(month.y(), 12), checkedSubtract<std::int64_t>(month.m(), 1));
}

YYYYMM ofMonthNumber(std::int64_t number) {
  return YYYYMM(day_number::floorDivide(number, 12), day_number::floorRemainder(number, 12) + 1);
}

YYYYMM rolledOver(const YYYYMM& month) {
  return month.m() >= 1 && month.m() <= 12 ? month : ofMonthNumber(monthNumber(month));
}

}  // namespace

std::optional<YYYYMM> YYYYMM::fromRawValue(std::int64_t rawValue) {
  const std::int64_t month = rawValue % 100;
  if (rawValue < 1 || month < 1 || month > 12) return std::nullopt;
  return YYYYMM(rawValue / 100, month);
}

std::int64_t YYYYMM::intValue() const { return checkedAdd(checkedMultiply<std::int64_t>(y_, 100), m_); }

YYYYMMDD YYYYMM::firstDay() const {
  const YYYYMM month = rolledOver(*this);
  return YYYYMMDD(month.y_, month.m_, 1);
}

YYYYMMDD YYYYMM::lastDay() const {
  const YYYYMM month = rolledOver(*this);
  return YYYYMMDD(month.y_, month.m_, month.numberOfDays());
}

std::int64_t YYYYMM::numberOfDaysRolledOver() const {
  // The integer form is a month's own only below 100, and fits 32 bits only for some millions of years.
  const bool fitsWord = m_ >= 0 && m_ < 100 && day_number::isNearYear(y_);
  auto& cache = QZDateTimeCache::shared().yyyymmDaysInMonthCache;
  const auto key = fitsWord ? static_cast<std::int32_t>(intValue()) : cache.noKey;
  if (const auto days = cache.find(key); days && fitsWord) return *days;
  const std::int64_t days = rolledOver(*this).numberOfDays();
  if (fitsWord) cache.store(key, static_cast<std::uint32_t>(days));
  return days;
}

YYYYMM YYYYMM::add(std::int64_t numMonths) const { return ofMonthNumber(checkedAdd(monthNumber(*this), numMonths)); }

YYYYMM YYYYMM::firstMonthOfYear() const { return YYYYMM(rolledOver(*this).y_, 1); }

YYYYMM YYYYMM::lastMonthOfYear() const { return YYYYMM(rolledOver(*this).y_, 12); }

std::int64_t YYYYMM::distance(const YYYYMM& to, bool includeThisMonth) const {
  const std::int64_t months = checkedSubtract(monthNumber(to), monthNumber(*this));
  return checkedAdd<std::int64_t>(months, includeThisMonth ? 1 : 0);
}

std::int64_t YYYYMM::numberOfDaysInWeekBeforeMonthStarts(DayOfWeek firstDay) const {
  const YYYYMMDD day = YYYYMM::firstDay();
  return day.startOfWeek(firstDay).distance(day);
}

std::int64_t YYYYMM::numberOfDaysInWeekAfterMonthEnds(DayOfWeek firstDay) const {
  return lastDay().numberOfDaysRemainingThisWeek(firstDay, false);
}

std::string YYYYMM::title() const {
  return QZDateTimeCache::symbolsFormatter().symbol(*this, DateFormatter::Width::full);
}

std::string YYYYMM::titleWithYear() const { return QZDateTimeCache::titleWithYearFormatter().string(*this); }

std::string YYYYMM::shortTitle() const {
  return QZDateTimeCache::symbolsFormatter().symbol(*this, DateFormatter::Width::abbreviated);
}

std::string YYYYMM::shortTitleWithYear() const { return QZDateTimeCache::shortTitleWithYearFormatter().string(*this); }

std::string YYYYMM::localizedYear() const { return QZDateTimeCache::localizedYearFormatter().string(*this); }

std::string YYYYMM::debugDescription() const {
  std::array<char, 48> text;  // two 64-bit numbers with signs, one hyphen
  const int length = std::snprintf(text.data(), text.size(), "%04" PRId64 "-%02" PRId64, y_, m_);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace qz
