#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qz {

/// A unit of measurement that health data come in. The raw value is the symbol under which files name it.
enum class QZHKUnit : std::uint8_t {
  count,
  metre,
  centimetre,
  kilometre,
  mile,
  yard,
  foot,
  inch,
  litre,
  millilitre,
  fluidOunceUS,
  cupUS,
  kilocalorie,
  kilojoule,
  second,
  minute,
  hour,
  gram,
  milligram,
  microgram,
  kilogram,
  pound,
  stone,
  percent,  ///< 100 is the whole
  countPerMinute,
  litrePerMinute,
  degreeCelsius,
  degreeFahrenheit,
  millimetreOfMercury,
  millimolePerLitre,
  milligramPerDecilitre,
  internationalUnit,
};

template <>
struct RawValueTable<QZHKUnit> {
  using U = QZHKUnit;
  static constexpr std::array<RawValueRow<U, std::string_view>, 32> rows{{
      {U::count, "count", "count"},
      {U::metre, "m", "metre"},
      {U::centimetre, "cm", "centimetre"},
      {U::kilometre, "km", "kilometre"},
      {U::mile, "mi", "mile"},
      {U::yard, "yd", "yard"},
      {U::foot, "ft", "foot"},
      {U::inch, "in", "inch"},
      {U::litre, "L", "litre"},
      {U::millilitre, "mL", "millilitre"},
      {U::fluidOunceUS, "fl_oz_us", "fluidOunceUS"},
      {U::cupUS, "cup_us", "cupUS"},
      {U::kilocalorie, "kcal", "kilocalorie"},
      {U::kilojoule, "kJ", "kilojoule"},
      {U::second, "s", "second"},
      {U::minute, "min", "minute"},
      {U::hour, "hr", "hour"},
      {U::gram, "g", "gram"},
      {U::milligram, "mg", "milligram"},
      {U::microgram, "mcg", "microgram"},
      {U::kilogram, "kg", "kilogram"},
      {U::pound, "lb", "pound"},
      {U::stone, "st", "stone"},
      {U::percent, "%", "percent"},
      {U::countPerMinute, "count/min", "countPerMinute"},
      {U::litrePerMinute, "L/min", "litrePerMinute"},
      {U::degreeCelsius, "degC", "degreeCelsius"},
      {U::degreeFahrenheit, "degF", "degreeFahrenheit"},
      {U::millimetreOfMercury, "mmHg", "millimetreOfMercury"},
      {U::millimolePerLitre, "mmol/L", "millimolePerLitre"},
      {U::milligramPerDecilitre, "mg/dL", "milligramPerDecilitre"},
      {U::internationalUnit, "IU", "internationalUnit"},
  }};
};

/// What a unit measures. Amounts convert within a dimension and never between two.
enum class QZHKDimension : std::uint8_t {
  count,
  length,
  volume,
  energy,
  time,
  mass,
  fraction,
  frequency,
  flow,
  temperature,
  pressure,
  concentration,  ///< of glucose in blood
  biologicalActivity,
};

/// An exact ratio of whole numbers, both at least 1.
struct QZHKFactor {
  std::int64_t numerator = 1;
  std::int64_t denominator = 1;

  friend bool operator==(const QZHKFactor&, const QZHKFactor&) = default;
};

[[nodiscard]] QZHKDimension dimension(QZHKUnit unit);

/// How many base units of its dimension one unit is, exactly. The base units are the metre, litre, kilojoule, second,
/// gram, degree Celsius, millimole per litre and, where a dimension has one unit only, that one. Degrees differ in
/// their zero as well: their factor is that of a difference of temperatures, and convert() moves the zero.
[[nodiscard]] QZHKFactor factor(QZHKUnit unit);

/// The same amount in another unit; none when the two do not measure the same. The amount is multiplied by the
/// numerator and divided by the denominator of the one factor over the other in lowest terms. So a whole number of
/// units becomes the double nearest to the exact result as long as the product stays below 2^53; temperatures, whose
/// zero moves as well, are right to within a few roundings.
[[nodiscard]] std::optional<double> convert(double quantity, QZHKUnit from, QZHKUnit to);

}  // namespace qz
