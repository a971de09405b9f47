#include <QZHealthKit/QZHKUnit.h>
#include <QZKit/OrderedRows.h>

#include <cstddef>
#include <numeric>

namespace qz {

namespace {

struct UnitRow {
  QZHKUnit unit;
  QZHKDimension dimension;
  QZHKFactor factor;
  double zero = 0;  ///< what the unit reads where the base unit reads 0
};

// The international yard is 0.9144 m, of 3 feet or 36 inches, the mile 1,760 yards, and the pound 0.45359237 kg
// (agreement of 1959); a stone is 14 pounds. The US gallon is 231 cubic inches, 3.785411784 L, with 128 fluid ounces
// and 16 cups. The calorie is the thermochemical one, 4.184 J. A mole of glucose weighs 180.156 g (standard atomic
// weights), so that 1 mmol/L of it is 18.0156 mg/dL.
constexpr std::array<UnitRow, 32> unitRows = [] {
  using U = QZHKUnit;
  using D = QZHKDimension;
  return std::array<UnitRow, 32>{{
      {U::count, D::count, {1, 1}},
      {U::metre, D::length, {1, 1}},
      {U::centimetre, D::length, {1, 100}},
      {U::kilometre, D::length, {1'000, 1}},
      {U::mile, D::length, {1'609'344, 1'000}},
      {U::yard, D::length, {9'144, 10'000}},
      {U::foot, D::length, {3'048, 10'000}},
      {U::inch, D::length, {254, 10'000}},
      {U::litre, D::volume, {1, 1}},
      {U::millilitre, D::volume, {1, 1'000}},
      {U::fluidOunceUS, D::volume, {3'785'411'784, 128'000'000'000}},
      {U::cupUS, D::volume, {3'785'411'784, 16'000'000'000}},
      {U::kilocalorie, D::energy, {4'184, 1'000}},
      {U::kilojoule, D::energy, {1, 1}},
      {U::second, D::time, {1, 1}},
      {U::minute, D::time, {60, 1}},
      {U::hour, D::time, {3'600, 1}},
      {U::gram, D::mass, {1, 1}},
      {U::milligram, D::mass, {1, 1'000}},
      {U::microgram, D::mass, {1, 1'000'000}},
      {U::kilogram, D::mass, {1'000, 1}},
      {U::pound, D::mass, {45'359'237, 100'000}},
      {U::stone, D::mass, {14 * 45'359'237, 100'000}},
      {U::percent, D::fraction, {1, 1}},
      {U::countPerMinute, D::frequency, {1, 1}},
      {U::litrePerMinute, D::flow, {1, 1}},
      {U::degreeCelsius, D::temperature, {1, 1}},
      {U::degreeFahrenheit, D::temperature, {5, 9}, 32},
      {U::millimetreOfMercury, D::pressure, {1, 1}},
      {U::millimolePerLitre, D::concentration, {1, 1}},
      {U::milligramPerDecilitre, D::concentration, {10'000, 180'156}},
      {U::internationalUnit, D::biologicalActivity, {1, 1}},
  }};
}();

static_assert(standInOrder(unitRows, &UnitRow::unit), "a row is found by its place");

const UnitRow& rowOf(QZHKUnit unit) { return unitRows[static_cast<std::size_t>(unit)]; }

/// The quotient of two factors in lowest terms, so that converting between litres and millilitres multiplies by 1,000
/// and does nothing else.
constexpr QZHKFactor quotient(const QZHKFactor& a, const QZHKFactor& b) {
  const std::int64_t above = std::gcd(a.numerator, b.numerator);
  const std::int64_t below = std::gcd(a.denominator, b.denominator);
  const std::int64_t numerator = a.numerator / above * (b.denominator / below);
  const std::int64_t denominator = a.denominator / below * (b.numerator / above);
  const std::int64_t common = std::gcd(numerator, denominator);
  return {numerator / common, denominator / common};
}

// The terms of every quotient that convert() needs are doubles without rounding. On the way to them nothing overflows,
// or this would not be a constant.
static_assert([] {
  constexpr std::int64_t exact = std::int64_t{1} << 53;
  for (const UnitRow& from : unitRows) {
    for (const UnitRow& to : unitRows) {
      if (from.dimension != to.dimension) continue;
      const QZHKFactor ratio = quotient(from.factor, to.factor);
      if (ratio.numerator > exact || ratio.denominator > exact) return false;
    }
  }
  return true;
}());

}  // namespace

QZHKDimension dimension(QZHKUnit unit) { return rowOf(unit).dimension; }

QZHKFactor factor(QZHKUnit unit) { return rowOf(unit).factor; }

std::optional<double> convert(double quantity, QZHKUnit from, QZHKUnit to) {
  if (dimension(from) != dimension(to)) return std::nullopt;
  if (from == to) return quantity;
  const QZHKFactor ratio = quotient(factor(from), factor(to));
  const double amount = quantity - rowOf(from).zero;
  return amount * static_cast<double>(ratio.numerator) / static_cast<double>(ratio.denominator) + rowOf(to).zero;
}

}  // namespace qz
