#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace habitra {

/// Amounts to choose from: lowest, lowest + step, and so on up to the highest, which need not be one of them. Each is
/// the double nearest to its decimal form (0.3 and not 0.30000000000000004).
/// REQUIRES of every function: lowest, highest and step are multiples of 0.001, step > 0, and
/// 0 <= lowest <= highest <= 1e9.
struct ValueRange {
  double lowest = 0.0;
  double highest = 0.0;
  double step = 1.0;

  /// How many there are, at least 1.
  [[nodiscard]] std::int64_t count() const;
  /// The one at a place. REQUIRES: 0 <= index < count().
  [[nodiscard]] double at(std::int64_t index) const;
  [[nodiscard]] std::vector<double> values() const;
  [[nodiscard]] bool contains(double value) const;
  /// The one that is nearest to a finite value; half-way the greater.
  [[nodiscard]] double nearest(double value) const;
  /// The least that is greater than a finite value, the greatest that is less; none beyond the ends.
  [[nodiscard]] std::optional<double> next(double value) const;
  [[nodiscard]] std::optional<double> previous(double value) const;

  friend bool operator==(const ValueRange&, const ValueRange&) = default;
};

}  // namespace habitra
