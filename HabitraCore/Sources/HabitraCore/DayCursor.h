#pragma once

#include <QZDateTime/DayNumber.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>

#include <cstdint>

/// For sources of this module.
namespace habitra {

/// A day that moves forward through the calendar in a few instructions a step. It is compared by the integer form under
/// which entries keep their days.
class DayCursor {
 public:
  /// REQUIRES: the calendar has `day`, and its integer form fits 32 bits.
  explicit DayCursor(const qz::YYYYMMDD& day) { moveTo(day); }

  void moveTo(const qz::YYYYMMDD& day) {
    day_ = qz::checkedNarrow<std::int32_t>(day.intValue());
    d_ = static_cast<std::int32_t>(day.d());
    numberOfDays_ = static_cast<std::int32_t>(qz::day_number::lengthOfMonth(day.y(), day.m()));
    dayOfWeek_ = day.dayOfWeek();
  }

  void next() {
    if (d_ == numberOfDays_) [[unlikely]] {
      moveTo(date().nextDay());
      return;
    }
    ++day_;
    ++d_;
    dayOfWeek_ = dayOfWeek_ == qz::DayOfWeek::saturday ? qz::DayOfWeek::sunday
                                                       : static_cast<qz::DayOfWeek::Case>(dayOfWeek_.rawValue() + 1);
  }

  [[nodiscard]] std::int32_t day() const { return day_; }
  [[nodiscard]] qz::YYYYMMDD date() const { return qz::YYYYMMDD(day_ / 10'000, day_ / 100 % 100, day_ % 100); }
  [[nodiscard]] std::int32_t d() const { return d_; }
  [[nodiscard]] std::int32_t numberOfDaysOfMonth() const { return numberOfDays_; }
  [[nodiscard]] qz::DayOfWeek dayOfWeek() const { return dayOfWeek_; }

 private:
  std::int32_t day_ = 0;
  std::int32_t d_ = 0;
  std::int32_t numberOfDays_ = 0;
  qz::DayOfWeek dayOfWeek_ = qz::DayOfWeek::sunday;
};

}  // namespace habitra
