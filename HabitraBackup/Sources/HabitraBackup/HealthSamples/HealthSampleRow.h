#pragma once

#include <QZHealthKit/QZHKSample.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace habitra {

/// One row of health samples as the file has it.
struct HealthSampleRow {
  std::size_t line = 0;                    ///< where it starts
  std::array<std::string_view, 6> fields;  ///< in the order of healthSampleHeaders

  /// The sample that the row spells; its identifier is still nil. Throws CSVError.
  [[nodiscard]] qz::QZHKSample sample() const;

 private:
  enum Column : std::size_t { type, start, end, value, unit, source };

  [[noreturn]] void refuse(Column column, std::string_view problem) const;
  [[nodiscard]] qz::QZHKObjectType readType() const;
  [[nodiscard]] qz::Moment readMoment(Column column) const;
  [[nodiscard]] qz::QZHKSampleValue readValue(qz::QZHKObjectType objectType) const;
  [[nodiscard]] qz::QZHKQuantity readQuantity(qz::QZHKObjectType objectType) const;
  [[nodiscard]] qz::QZHKWorkout readWorkout() const;
  void requireEmpty(Column column, std::string_view why) const;
};

}  // namespace habitra
