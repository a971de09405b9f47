#pragma once

#include <QZDateTime/DayNumber.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>

#include <cstdint>

/// For sources of this module.
namespace habitra {

/// A day that moves forward through the calendar in a few instructions a step. It is compared by the integer form under
/// which entries keep their days, and counted by its number.
class DayCursor {
 public:
  /// REQUIRES: the calendar has `day`, and its integer form fits 32 bits.
  explicit DayCursor(const qz::YYYYMMDD& day) { moveTo(day); }

  void moveTo(const qz::YYYYMMDD& day) {
    day_ = qz::checkedNarrow<std::int32_t>(day.intValue());
    number_ = qz::checkedNarrow<std::int32_t>(day.dayNumber());
    d_ = static_cast<std::int32_t>(day.d());
    numberOfDays_ = static_cast<std::int32_t>(qz::day_number::lengthOfMonth(day.y(), day.m()));
    dayOfWeek_ = day.dayOfWeek();
  }

  void next() {
    if (d_ == numberOfDays_) [[unlikely]] {
      beginNextMonth();
    } else {
      ++day_;
      ++d_;
    }
    ++number_;
    dayOfWeek_ = dayOfWeek_ == qz::DayOfWeek::saturday ? qz::DayOfWeek::sunday
                                                       : static_cast<qz::DayOfWeek::Case>(dayOfWeek_.rawValue() + 1);
  }

  /// Moves `numDays` (at least 1) on. REQUIRES: numDays <= numDaysLeftOfMonth() + 1.
  void advance(std::int32_t numDays) {
    const std::int32_t withinMonth = numDays - 1;
    day_ += withinMonth;
    number_ += withinMonth;
    d_ += withinMonth;
    dayOfWeek_ = static_cast<qz::DayOfWeek::Case>(static_cast<std::uint32_t>(dayOfWeek_.rawValue() + withinMonth) % 7);
    next();
  }

  [[nodiscard]] std::int32_t day() const { return day_; }
  /// Days since 1970-01-01.
  [[nodiscard]] std::int32_t number() const { return number_; }
  [[nodiscard]] qz::YYYYMMDD date() const { return qz::YYYYMMDD(day_ / 10'000, day_ / 100 % 100, day_ % 100); }
  [[nodiscard]] std::int32_t d() const { return d_; }
  [[nodiscard]] std::int32_t numberOfDaysOfMonth() const { return numberOfDays_; }
  [[nodiscard]] std::int32_t numDaysLeftOfMonth() const { return numberOfDays_ - d_; }
  [[nodiscard]] qz::DayOfWeek dayOfWeek() const { return dayOfWeek_; }

 private:
  void beginNextMonth() {
    std::int32_t y = day_ / 10'000;
    std::int32_t m = day_ / 100 % 100 + 1;
    if (m > 12) {
      m = 1;
      y = qz::checkedAdd(y, std::int32_t{1});
    }
    day_ = qz::checkedAdd(qz::checkedMultiply(y, std::int32_t{10'000}), m * 100 + 1);
    d_ = 1;
    numberOfDays_ = static_cast<std::int32_t>(qz::day_number::lengthOfMonth(y, m));
  }

  std::int32_t day_ = 0;
  std::int32_t number_ = 0;
  std::int32_t d_ = 0;
  std::int32_t numberOfDays_ = 0;
  qz::DayOfWeek dayOfWeek_ = qz::DayOfWeek::sunday;
};

}  // namespace habitra
