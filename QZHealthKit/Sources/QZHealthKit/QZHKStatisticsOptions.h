#pragma once

#include <QZKit/BitIterator.h>

#include <cstdint>
#include <initializer_list>

namespace qz {

/// A figure that a statistics query can ask for. QZHKStatistics says what each is.
enum class QZHKStatisticsOption : std::uint8_t {
  cumulativeSum,  ///< the sum of amounts, or the number of samples where they have none
  discreteMin,    ///< the least amount
  discreteMax,    ///< the greatest amount
  mostRecent,     ///< the amount of the sample that ended last
  duration,       ///< the time covered by samples, overlaps counted once
};

/// A set of options. Iterates in the order of declaration.
class QZHKStatisticsOptions {
 public:
  static const QZHKStatisticsOptions cumulativeSum;
  static const QZHKStatisticsOptions discreteMin;
  static const QZHKStatisticsOptions discreteMax;
  static const QZHKStatisticsOptions mostRecent;
  static const QZHKStatisticsOptions duration;

  /// The empty set.
  constexpr QZHKStatisticsOptions() = default;
  constexpr QZHKStatisticsOptions(std::initializer_list<QZHKStatisticsOption> list) {
    for (const QZHKStatisticsOption option : list) insert(option);
  }

  [[nodiscard]] constexpr bool isEmpty() const { return bits_ == 0; }
  [[nodiscard]] constexpr bool contains(QZHKStatisticsOption option) const {
    return (bits_ >> static_cast<unsigned>(option) & 1) != 0;
  }

  constexpr void insert(QZHKStatisticsOption option) {
    bits_ = static_cast<std::uint8_t>(bits_ | 1 << static_cast<unsigned>(option));
  }

  /// The option of a bit, 0 to 4.
  [[nodiscard]] static constexpr QZHKStatisticsOption option(std::int64_t bit) {
    return static_cast<QZHKStatisticsOption>(bit);
  }
  using Iterator = BitIterator<QZHKStatisticsOption, &QZHKStatisticsOptions::option>;

  [[nodiscard]] constexpr Iterator begin() const { return Iterator(bits_); }
  [[nodiscard]] constexpr Iterator end() const { return Iterator(); }

  friend constexpr QZHKStatisticsOptions operator|(QZHKStatisticsOptions a, QZHKStatisticsOptions b) {
    a.bits_ = static_cast<std::uint8_t>(a.bits_ | b.bits_);
    return a;
  }
  friend bool operator==(const QZHKStatisticsOptions&, const QZHKStatisticsOptions&) = default;

 private:
  std::uint8_t bits_ = 0;
};

inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::cumulativeSum{QZHKStatisticsOption::cumulativeSum};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::discreteMin{QZHKStatisticsOption::discreteMin};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::discreteMax{QZHKStatisticsOption::discreteMax};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::mostRecent{QZHKStatisticsOption::mostRecent};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::duration{QZHKStatisticsOption::duration};

}  // namespace qz
