#pragma once

#include <QZDateTime/DayNumber.h>
#include <QZDateTime/DayOfWeek.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace qz {

class YYYYMMDD;

/// A calendar month of the Gregorian calendar. Its integer form, y × 100 + m, is what is stored and coded: January 2024
/// is 202401. Months before and after every bound of common calendars behave; arithmetic that leaves 64 bits traps. A
/// month outside 1–12 is held as it stands and rolled over when it is calculated with.
///
/// A plain immutable value, safe on any thread.
class YYYYMM {
 public:
  /// None below 1 and for a month outside 1–12.
  [[nodiscard]] static std::optional<YYYYMM> fromRawValue(std::int64_t rawValue);

  constexpr YYYYMM(std::int64_t y, std::int64_t m) : y_(y), m_(m) {}

  [[nodiscard]] constexpr std::int64_t y() const { return y_; }
  [[nodiscard]] constexpr std::int64_t m() const { return m_; }

  /// y × 100 + m; traps on overflow.
  [[nodiscard]] std::int64_t intValue() const;
  [[nodiscard]] std::int64_t rawValue() const { return intValue(); }

  [[nodiscard]] YYYYMMDD firstDay() const;
  [[nodiscard]] YYYYMMDD lastDay() const;
  /// 28 to 31.
  [[nodiscard]] std::int64_t numberOfDays() const {
    if (m_ >= 1 && m_ <= 12) [[likely]]
      return day_number::lengthOfMonth(y_, m_);
    return numberOfDaysRolledOver();
  }

  [[nodiscard]] YYYYMM add(std::int64_t numMonths) const;
  [[nodiscard]] YYYYMM nextMonth() const { return add(1); }
  [[nodiscard]] YYYYMM previousMonth() const { return add(-1); }
  [[nodiscard]] YYYYMM firstMonthOfYear() const;
  [[nodiscard]] YYYYMM lastMonthOfYear() const;

  /// Whole months from this one to another, negative to an earlier one; one more with `includeThisMonth`.
  [[nodiscard]] std::int64_t distance(const YYYYMM& to, bool includeThisMonth = false) const;

  /// The blank cells before the first and after the last day in a month grid whose weeks begin on `firstDay`: 0 to 6.
  [[nodiscard]] std::int64_t numberOfDaysInWeekBeforeMonthStarts(DayOfWeek firstDay) const;
  [[nodiscard]] std::int64_t numberOfDaysInWeekAfterMonthEnds(DayOfWeek firstDay) const;

  /// In the user's language: "January", "January 2024", "Jan", "Jan 2024". English when names cannot be had.
  [[nodiscard]] std::string title() const;
  [[nodiscard]] std::string titleWithYear() const;
  [[nodiscard]] std::string shortTitle() const;
  [[nodiscard]] std::string shortTitleWithYear() const;
  /// The year alone, as the user's language writes it.
  [[nodiscard]] std::string localizedYear() const;

  /// "2024-01".
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const YYYYMM&, const YYYYMM&) = default;
  friend auto operator<=>(const YYYYMM&, const YYYYMM&) = default;

 private:
  [[nodiscard]] std::int64_t numberOfDaysRolledOver() const;

  std::int64_t y_;
  std::int64_t m_;
};

void to_json(nlohmann::json& json, const YYYYMM& month);
/// Throws DecodingError "Unable to create YYYYMM".
void from_json(const nlohmann::json& json, YYYYMM& month);

}  // namespace qz

template <>
struct std::hash<qz::YYYYMM> {
  std::size_t operator()(const qz::YYYYMM& month) const noexcept {
    return static_cast<std::size_t>(month.y()) * 100 + static_cast<std::size_t>(month.m());
  }
};
