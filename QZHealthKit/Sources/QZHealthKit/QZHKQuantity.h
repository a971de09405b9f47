#pragma once

#include <QZHealthKit/QZHKUnit.h>

#include <optional>

namespace qz {

/// An amount in a unit. Equal amounts in different units are different values.
struct QZHKQuantity {
  double value = 0;
  QZHKUnit unit = QZHKUnit::count;

  /// The amount in another unit; none when the two do not measure the same.
  [[nodiscard]] std::optional<double> valueIn(QZHKUnit other) const { return convert(value, unit, other); }

  friend bool operator==(const QZHKQuantity&, const QZHKQuantity&) = default;
};

}  // namespace qz
