#include <HabitraCore/AutomaticTaskType/TypeUnit.h>
#include <QZKit/OrderedRows.h>

#include <cstddef>

namespace habitra {

namespace {

struct UnitRow {
  TypeUnit::Case unit;
  std::string_view symbol;
  TypeUnit::Dimension dimension;
  qz::QZHKUnit healthKit;  ///< whose row holds the factor to the base unit
  std::int64_t decimals;
};

// In order of declaration. The decimals are those that people use: a hundredth of a kilometre is ten paces, nobody
// drinks a tenth of a millilitre; of vitamins a tenth of a microgram matters (2.4 mcg of B12).
constexpr std::array<UnitRow, RawValueTable<TypeUnit>::rows.size()> unitRows = [] {
  using U = TypeUnit;
  using D = TypeUnit::Dimension;
  using H = qz::QZHKUnit;
  return std::array<UnitRow, RawValueTable<TypeUnit>::rows.size()>{{
      {U::distanceKm, "km", D::distance, H::kilometre, 2},
      {U::distanceMeters, "m", D::distance, H::metre, 0},
      {U::distanceMiles, "mi", D::distance, H::mile, 2},
      {U::distanceYards, "yd", D::distance, H::yard, 0},
      {U::steps, "steps", D::steps, H::count, 0},
      {U::pushes, "pushes", D::pushes, H::count, 0},
      {U::drinks, "drinks", D::drinks, H::count, 1},
      {U::fluidOuncesUS, "fl oz", D::volume, H::fluidOunceUS, 1},
      {U::litres, "l", D::volume, H::litre, 2},
      {U::millilitres, "ml", D::volume, H::millilitre, 0},
      {U::cupsUS, "cups", D::volume, H::cupUS, 2},
      {U::calories, "kcal", D::energy, H::kilocalorie, 0},
      {U::kilojoules, "kJ", D::energy, H::kilojoule, 0},
      {U::durationSeconds, "s", D::duration, H::second, 0},
      {U::durationMinutes, "min", D::duration, H::minute, 1},
      {U::durationHours, "h", D::duration, H::hour, 2},
      {U::flights, "flights", D::flights, H::count, 0},
      {U::milligrams, "mg", D::mass, H::milligram, 2},
      {U::micrograms, "mcg", D::mass, H::microgram, 1},
      {U::grams, "g", D::mass, H::gram, 2},
      {U::timeOfDay, "", D::timeOfDay, H::second, 0},
  }};
}();

static_assert(qz::standInOrder(unitRows, &UnitRow::unit), "a unit's place is its number");

const UnitRow& rowOf(TypeUnit unit) { return unitRows[static_cast<std::size_t>(TypeUnit::Case(unit))]; }

constexpr double secondsPerMinute = 60;
constexpr double secondsPerHour = 3'600;

}  // namespace

TypeUnit::Dimension TypeUnit::dimension() const { return rowOf(*this).dimension; }

qz::QZHKUnit TypeUnit::healthKit() const { return rowOf(*this).healthKit; }

std::string_view TypeUnit::symbol() const { return rowOf(*this).symbol; }

std::int64_t TypeUnit::decimals() const { return rowOf(*this).decimals; }

std::optional<double> TypeUnit::convert(double quantity, TypeUnit to) const {
  if (dimension() != to.dimension()) return std::nullopt;
  return qz::convert(quantity, healthKit(), to.healthKit());
}

double TypeUnit::convertToTimeInterval(double value) const {
  if (value_ == durationMinutes) return value * secondsPerMinute;
  if (value_ == durationHours) return value * secondsPerHour;
  return value;
}

double TypeUnit::convertFromTimeInterval(double duration) const {
  if (value_ == durationMinutes) return duration / secondsPerMinute;
  if (value_ == durationHours) return duration / secondsPerHour;
  return duration;
}

TaskProgressTimer::Unit TypeUnit::timerUnit() const {
  if (value_ == durationSeconds) return TaskProgressTimer::Unit::seconds;
  if (value_ == durationHours) return TaskProgressTimer::Unit::hours;
  return TaskProgressTimer::Unit::minutes;
}

}  // namespace habitra
