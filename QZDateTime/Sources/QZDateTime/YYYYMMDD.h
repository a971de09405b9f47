#pragma once

#include <QZDateTime/DayNumber.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMM.h>
#include <QZKit/Checked.h>
#include <QZKit/Clock.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace qz {

class Calendar;

/// A calendar day: a date of the Gregorian calendar, of no zone and no clock. Everything about habits is counted in it.
///
/// *Which day is it?* A person's day need not begin at midnight. The day of a moment is found from the wall clock of a
/// zone and a start of day. With a start at or before midday the small hours still belong to the date before: start
/// 03:00, and 01:30 on the 5th is the 4th, 03:00 sharp the 5th. With a start after midday the evening already belongs
/// to the next date: start 20:00, and 20:00 on the 4th is the 5th, 19:59:59 the 4th. So a day is named after the date
/// on which its larger part falls; a start of exactly 12:00:00 counts as "before". The wall clock alone decides: an
/// hour that is lived twice in autumn is judged the same both times, and where a start of day falls into such an hour
/// the day can change, change back and change again.
///
/// *When does it begin?* dateAt(startOfDay, timeZone) is the day's own date at that time; beginning(startOfDay,
/// timeZone) is the first moment of the day, which lies on the date before when the start is after midday. A time that
/// clocks jump over is the first moment after the jump, and one they show twice is the first of the two. On a date that
/// a zone left out altogether (Apia, 30 December 2011) every time is the first moment of the next date.
///
/// *Integer form*: y × 10000 + m × 100 + d, 20240131 for 31 January 2024; stored, exported, coded, and the order of
/// days. An integer from a store is taken as it stands, so a day may be held that no calendar has (20230230). exists()
/// tells; readers of files must ask. Calculated with, such a day rolls over: 30 February 2023 is 2 March, and the day
/// after it the 3rd.
///
/// *Adding months* is for YYYYMM to say, and it knows no days: nothing here guesses what a month after 31 January is.
///
/// Years are 64 bits wide; arithmetic that leaves them traps. A plain immutable value, safe on any thread.
/// Default-constructed it is emptyValue.
class YYYYMMDD {
 public:
  struct Range;

  /// A day that is not set: 0, before every day of a calendar year from 1 on.
  static const YYYYMMDD emptyValue;

  /// None below 1; otherwise the parts are taken as they stand.
  [[nodiscard]] static constexpr std::optional<YYYYMMDD> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 1) return std::nullopt;
    return YYYYMMDD(rawValue / 10'000, rawValue / 100 % 100, rawValue % 100);
  }

  constexpr YYYYMMDD() = default;
  constexpr YYYYMMDD(std::int64_t y, std::int64_t m, std::int64_t d) : y_(y), m_(m), d_(d) {
    if (!day_number::isNearYear(y) || m < 1 || m > 12 || d < 1) return;
    const std::int64_t left = day_number::lengthOfMonth(y, m) - d;
    if (left < 0) return;
    left_ = static_cast<std::int32_t>(left);
    number_ = static_cast<std::int32_t>(day_number::ofNear(y, m, d));
  }
  /// The day on which a moment falls; the cached form.
  YYYYMMDD(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone)
      : YYYYMMDD(calculateCached(startOfDay, date, timeZone)) {}

  /// The day on which a moment falls, with and without the shared cache; they always agree.
  [[nodiscard]] static YYYYMMDD calculateCached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone);
  [[nodiscard]] static YYYYMMDD calculateUncached(const HHMMSS& startOfDay, Moment date, const TimeZone& timeZone);

  [[nodiscard]] static YYYYMMDD today(const HHMMSS& startOfDay, const TimeZone& timeZone, Moment now) {
    return calculateCached(startOfDay, now, timeZone);
  }

  /// The date of a day number (days since 1970-01-01).
  [[nodiscard]] static YYYYMMDD fromDayNumber(std::int64_t number);

  [[nodiscard]] constexpr std::int64_t y() const { return y_; }
  [[nodiscard]] constexpr std::int64_t m() const { return m_; }
  [[nodiscard]] constexpr std::int64_t d() const { return d_; }

  /// y × 10000 + m × 100 + d; traps on overflow.
  [[nodiscard]] constexpr std::int64_t intValue() const {
    return checkedAdd(checkedAdd(checkedMultiply<std::int64_t>(y_, 10'000), checkedMultiply<std::int64_t>(m_, 100)),
                      d_);
  }
  [[nodiscard]] constexpr std::int64_t rawValue() const { return intValue(); }

  /// Whether the calendar has this day.
  [[nodiscard]] constexpr bool exists() const { return carriesNumber() || day_number::exists(y_, m_, d_); }

  /// Days since 1970-01-01, negative before; traps on overflow.
  [[nodiscard]] std::int64_t dayNumber() const { return carriesNumber() ? number_ : day_number::ofAny(y_, m_, d_); }

  /// Midnight at which the day begins: dateAt(HHMMSS::midnight, timeZone).
  [[nodiscard]] Moment startOfDay(const TimeZone& timeZone) const { return dateAt(HHMMSS::midnight, timeZone); }
  /// The day's own date at the start-of-day time. Traps when that lies outside a Moment's range (some 292,000 years).
  [[nodiscard]] Moment dateAt(const HHMMSS& startOfDay, const TimeZone& timeZone) const;
  /// The moment of this day at which the wall clock shows h:m:s: on the next date when that is before a start of day in
  /// the morning (start 03:00, 01:30), on the date before when it is not before one in the evening (start 20:00,
  /// 21:00). REQUIRES: h:m:s is a time of day.
  [[nodiscard]] Moment dateAt(const HHMMSS& startOfDay, std::int64_t h, std::int64_t m, std::int64_t s,
                              const TimeZone& timeZone) const;
  /// The first moment of the day: dateAt, on the date before when the start of day is after midday.
  [[nodiscard]] Moment beginning(const HHMMSS& startOfDay, const TimeZone& timeZone) const;

  [[nodiscard]] DayOfWeek dayOfWeek() const {
    if (carriesNumber()) [[likely]] {
      // 1970-01-01 was a Thursday; the shift makes every number that is carried positive.
      return static_cast<DayOfWeek::Case>((static_cast<std::uint32_t>(number_) + weekdayShift) % 7);
    }
    return YYYYMMDD(*this).farDayOfWeek();
  }

  [[nodiscard]] constexpr YYYYMM yyyymm() const { return YYYYMM(y_, m_); }

  [[nodiscard]] YYYYMMDD nextDay() const {
    if (left_ > 0) [[likely]]
      return YYYYMMDD(y_, m_, d_ + 1, number_ + 1, left_ - 1);
    if (carriesNumber()) return m_ == 12 ? YYYYMMDD(y_ + 1, 1, 1) : YYYYMMDD(y_, m_ + 1, 1);
    return YYYYMMDD(*this).farNextDay();  // of a copy, so that a loop can keep its day in registers
  }
  [[nodiscard]] YYYYMMDD previousDay() const {
    if (carriesNumber() && d_ > 1) [[likely]]
      return YYYYMMDD(y_, m_, d_ - 1, number_ - 1, left_ + 1);
    if (carriesNumber())
      return m_ == 1 ? YYYYMMDD(y_ - 1, 12, 31) : YYYYMMDD(y_, m_ - 1, day_number::lengthOfMonth(y_, m_ - 1));
    return YYYYMMDD(*this).farPreviousDay();
  }

  /// The day that many days later, earlier when negative: whole days of the calendar, whatever clocks do.
  [[nodiscard]] YYYYMMDD add(std::int64_t numDays) const {
    if (carriesNumber() && numDays <= left_ && numDays > -d_) [[likely]] {
      const auto days = static_cast<std::int32_t>(numDays);
      return YYYYMMDD(y_, m_, d_ + numDays, number_ + days, left_ - days);
    }
    return YYYYMMDD(*this).addBeyondMonth(numDays);
  }

  /// nextDay and add without the shared cache.
  [[nodiscard]] YYYYMMDD nextDayUsingCalendar() const;
  [[nodiscard]] YYYYMMDD addUsingCalendar(const Calendar& calendar, std::int64_t numDays) const;

  /// Whole days from this day to another, negative to an earlier one. With `includeThisDay` one more, so that both ends
  /// count: Monday to Wednesday is 2, and 3 with both.
  [[nodiscard]] std::int64_t distance(const YYYYMMDD& to, bool includeThisDay = false) const {
    const std::int64_t extra = includeThisDay ? 1 : 0;
    if ((left_ | to.left_) >= 0) [[likely]]  // both carry their number
      return std::int64_t{to.number_} - number_ + extra;
    return checkedAdd(YYYYMMDD(*this).farDistance(YYYYMMDD(to)), extra);
  }

  /// The same as add; with distance it makes days a sequence to stride over.
  [[nodiscard]] YYYYMMDD advanced(std::int64_t by) const { return add(by); }

  /// The first and last day of the week that holds this day, for weeks that begin on `firstDay`.
  [[nodiscard]] YYYYMMDD startOfWeek(DayOfWeek firstDay) const;
  [[nodiscard]] YYYYMMDD endOfWeek(DayOfWeek firstDay) const;

  /// The first and last day of the two weeks that hold this day. Such blocks follow each other without end in both
  /// directions, and one of them begins with the week that holds `referenceDate`: all days of that week give the same
  /// blocks.
  [[nodiscard]] YYYYMMDD startOfFortnight(DayOfWeek firstDayOfWeek,
                                          const YYYYMMDD& referenceDate = fortnightReferenceDate()) const;
  [[nodiscard]] YYYYMMDD endOfFortnight(DayOfWeek firstDayOfWeek,
                                        const YYYYMMDD& referenceDate = fortnightReferenceDate()) const;
  /// 2000-01-01.
  [[nodiscard]] static constexpr YYYYMMDD fortnightReferenceDate() { return YYYYMMDD(2000, 1, 1); }

  /// Days from this one to the end of its week, fortnight, month or year; with `include` this one counts, too.
  [[nodiscard]] std::int64_t numberOfDaysRemainingThisWeek(DayOfWeek firstDay, bool include) const;
  [[nodiscard]] std::int64_t numberOfDaysRemainingThisFortnight(
      DayOfWeek firstDayOfWeek, bool include, const YYYYMMDD& referenceDate = fortnightReferenceDate()) const;
  [[nodiscard]] std::int64_t numberOfDaysRemainingThisMonth(bool include) const;
  [[nodiscard]] std::int64_t numberOfDaysRemainingThisYear(bool include) const;

  /// For display, as the user's language writes a date: "Jan 31, 2024".
  [[nodiscard]] std::string string() const;
  /// "2024-01-31".
  [[nodiscard]] std::string debugDescription() const;

  friend constexpr bool operator==(const YYYYMMDD&, const YYYYMMDD&) = default;
  friend constexpr auto operator<=>(const YYYYMMDD&, const YYYYMMDD&) = default;

 private:
  friend class QZDateTimeCache;

  static constexpr std::uint32_t weekdayShift = 0x8000'0000u + 2;  // 2^31 is 2 more than a multiple of 7, Thursday is 4

  constexpr YYYYMMDD(std::int64_t y, std::int64_t m, std::int64_t d, std::int32_t number, std::int32_t left)
      : y_(y), m_(m), d_(d), number_(number), left_(left) {}

  [[nodiscard]] constexpr bool carriesNumber() const { return left_ >= 0; }

  [[nodiscard]] YYYYMMDD farNextDay() const;
  [[nodiscard]] YYYYMMDD farPreviousDay() const;
  [[nodiscard]] YYYYMMDD addBeyondMonth(std::int64_t numDays) const;
  [[nodiscard]] DayOfWeek farDayOfWeek() const;
  [[nodiscard]] std::int64_t farDistance(const YYYYMMDD& to) const;

  std::int64_t y_ = 0;
  std::int64_t m_ = 0;
  std::int64_t d_ = 0;
  // The day's number and the days left in its month, carried along because weekday, distance and stepping by them cost
  // less than any look-up. Only a day that the calendar has, within day_number::nearYears, carries them; of others the
  // second is negative.
  std::int32_t number_ = 0;
  std::int32_t left_ = -1;
};

inline constexpr YYYYMMDD YYYYMMDD::emptyValue{};

/// A span of days, both ends included; an end that is absent is open. Coded with the keys "minDate" and "maxDate"; a
/// null is read as an absent end.
struct YYYYMMDD::Range {
  std::optional<YYYYMMDD> minDate;
  std::optional<YYYYMMDD> maxDate;

  /// From a day on, and up to a day.
  [[nodiscard]] static constexpr Range from(const YYYYMMDD& minDate) { return {minDate, std::nullopt}; }
  [[nodiscard]] static constexpr Range to(const YYYYMMDD& maxDate) { return {std::nullopt, maxDate}; }

  [[nodiscard]] constexpr bool contains(const YYYYMMDD& day) const {
    return (!minDate || *minDate <= day) && (!maxDate || day <= *maxDate);
  }

  friend bool operator==(const Range&, const Range&) = default;
};

void to_json(nlohmann::json& json, const YYYYMMDD& day);
/// Throws DecodingError "Unable to create YYYYMMDD from " and the offending value.
void from_json(const nlohmann::json& json, YYYYMMDD& day);
void to_json(nlohmann::json& json, const YYYYMMDD::Range& range);
/// Throws DecodingError.
void from_json(const nlohmann::json& json, YYYYMMDD::Range& range);

}  // namespace qz

template <>
struct std::hash<qz::YYYYMMDD> {
  std::size_t operator()(const qz::YYYYMMDD& day) const noexcept {
    return (static_cast<std::size_t>(day.y()) * 10'000 + static_cast<std::size_t>(day.m()) * 100) +
           static_cast<std::size_t>(day.d());
  }
};

template <>
struct std::hash<qz::YYYYMMDD::Range> {
  std::size_t operator()(const qz::YYYYMMDD::Range& range) const noexcept {
    const std::hash<std::optional<qz::YYYYMMDD>> hashOfEnd;
    return hashOfEnd(range.minDate) * 31 + hashOfEnd(range.maxDate);
  }
};
