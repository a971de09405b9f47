#pragma once

#include <QZKit/BitIterator.h>

#include <compare>
#include <cstdint>
#include <initializer_list>
#include <optional>

namespace qz {

/// A figure that a statistics query can ask for, or how it is to be given. The value is the number of its bit.
enum class QZHKStatisticsOption : std::uint8_t {
  cumulativeSum,     ///< the sum of amounts, or the number of samples that have none
  discreteAverage,   ///< the mean of amounts, each sample once
  discreteMin,       ///< the least amount
  discreteMax,       ///< the greatest amount
  mostRecent,        ///< the amount of the sample that ended last
  duration,          ///< the time covered by samples, overlaps counted once
  separateBySource,  ///< the same figures for each source beside those of all
};

/// A set of options over an integer: option number n is the bit 1 << n. Iterates in the order of declaration.
class QZHKStatisticsOptions {
 public:
  static const QZHKStatisticsOptions cumulativeSum;
  static const QZHKStatisticsOptions discreteAverage;
  static const QZHKStatisticsOptions discreteMin;
  static const QZHKStatisticsOptions discreteMax;
  static const QZHKStatisticsOptions mostRecent;
  static const QZHKStatisticsOptions duration;
  static const QZHKStatisticsOptions separateBySource;

  /// None when a bit beyond the seven is set: 0 <= rawValue <= 127.
  [[nodiscard]] static constexpr std::optional<QZHKStatisticsOptions> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 127) return std::nullopt;
    QZHKStatisticsOptions options;
    options.bits_ = static_cast<std::uint8_t>(rawValue);
    return options;
  }

  /// The empty set.
  constexpr QZHKStatisticsOptions() = default;
  constexpr QZHKStatisticsOptions(std::initializer_list<QZHKStatisticsOption> list) {
    for (const QZHKStatisticsOption option : list) insert(option);
  }

  [[nodiscard]] constexpr std::int64_t rawValue() const { return bits_; }
  [[nodiscard]] constexpr bool isEmpty() const { return bits_ == 0; }
  [[nodiscard]] constexpr bool contains(QZHKStatisticsOption option) const {
    return (bits_ >> static_cast<unsigned>(option) & 1) != 0;
  }

  constexpr void insert(QZHKStatisticsOption option) {
    bits_ = static_cast<std::uint8_t>(bits_ | 1 << static_cast<unsigned>(option));
  }

  /// The option of a bit, 0 to 6.
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
  friend auto operator<=>(const QZHKStatisticsOptions&, const QZHKStatisticsOptions&) = default;

 private:
  std::uint8_t bits_ = 0;
};

inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::cumulativeSum{QZHKStatisticsOption::cumulativeSum};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::discreteAverage{QZHKStatisticsOption::discreteAverage};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::discreteMin{QZHKStatisticsOption::discreteMin};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::discreteMax{QZHKStatisticsOption::discreteMax};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::mostRecent{QZHKStatisticsOption::mostRecent};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::duration{QZHKStatisticsOption::duration};
inline constexpr QZHKStatisticsOptions QZHKStatisticsOptions::separateBySource{QZHKStatisticsOption::separateBySource};

}  // namespace qz
