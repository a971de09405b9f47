#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace habitra {

namespace {

constexpr std::size_t numTypes = RawValueTable<HealthType>::rows.size();

constexpr auto all = []<std::size_t... i>(std::index_sequence<i...>) {
  return std::array<HealthType, numTypes>{RawValueTable<HealthType>::rows[i].value...};
}
(std::make_index_sequence<numTypes>());

/// Whether a choice narrows down what is measured. Nothing chosen is everything.
bool isPartOfSpeeds(const HealthTypeRow& row, TypeSpeeds speeds) {
  const auto isChosen = [speeds](TypeSpeed speed) { return speeds.contains(speed); };
  return std::any_of(row.speeds.begin(), row.speeds.end(), isChosen) &&
         !std::all_of(row.speeds.begin(), row.speeds.end(), isChosen);
}

/// `quantity` without what is finer than one part of `partsOfOne`, but at least `least`; 0 stays 0.
double cut(double quantity, double partsOfOne, double least) {
  const std::int64_t parts = qz::checkedCount(quantity * partsOfOne);
  if (quantity == 0) return 0;
  return std::max(static_cast<double>(parts) / partsOfOne, least);
}

}  // namespace

std::span<const HealthType> HealthType::allCases() { return all; }

std::optional<TypeUnit> HealthType::defaultUnit() const {
  const auto& quantities = healthTypeRow(*this).quantities;
  return quantities.empty() ? std::nullopt : std::optional(quantities.front().unit);
}

std::optional<double> HealthType::defaultQuantity(TypeUnit unit, TaskFrequencyPeriodType measurementDuration) const {
  const QuantityRow* row = quantityRow(healthTypeRow(*this).quantities, unit);
  return row ? std::optional(usualQuantity(*row, measurementDuration)) : std::nullopt;
}

TypeSpeeds HealthType::defaultSpeeds() const { return healthTypeRow(*this).defaultSpeeds; }

std::optional<TaskTarget> HealthType::defaultTarget(TaskFrequencyPeriodType measurementDuration) const {
  const auto& quantities = healthTypeRow(*this).quantities;
  if (quantities.empty()) return std::nullopt;
  return TaskTarget{.quantity = usualQuantity(quantities.front(), measurementDuration),
                    .unit = quantities.front().unit,
                    .speeds = defaultSpeeds()};
}

std::optional<ValueRange> HealthType::quantityOptions(TypeUnit unit,
                                                      TaskFrequencyPeriodType measurementDuration) const {
  const QuantityRow* row = quantityRow(healthTypeRow(*this).quantities, unit);
  return row ? std::optional(habitra::quantityOptions(*row, measurementDuration)) : std::nullopt;
}

std::vector<TypeUnit> HealthType::unitOptions() const {
  std::vector<TypeUnit> units;
  for (const QuantityRow& row : healthTypeRow(*this).quantities) units.push_back(row.unit);
  return units;
}

bool HealthType::canSelectUnit() const { return healthTypeRow(*this).quantities.size() > 1; }

HealthType::SpeedSelectionType HealthType::canSelectSpeed() const { return healthTypeRow(*this).speedSelection; }

std::vector<TypeSpeed> HealthType::sortedSpeedOptions() const {
  const auto& speeds = healthTypeRow(*this).speeds;
  return {speeds.begin(), speeds.end()};
}

bool HealthType::canBeTimed() const {
  const auto& speeds = healthTypeRow(*this).speeds;
  return std::find(speeds.begin(), speeds.end(), TypeSpeed::timed) != speeds.end();
}

std::vector<HealthType> HealthType::timedTypes() {
  std::vector<HealthType> timed;
  std::copy_if(all.begin(), all.end(), std::back_inserter(timed), [](HealthType type) { return type.canBeTimed(); });
  return timed;
}

bool HealthType::canSelectWorkoutTypes() const {
  const auto& reads = healthTypeRow(*this).reads;
  return std::find(reads.begin(), reads.end(), qz::QZHKObjectType::workout) != reads.end();
}

QuantitySelectionStyle HealthType::quantitySelectionStyle() const {
  const HealthTypeRow& row = healthTypeRow(*this);
  if (row.quantities.empty()) return QuantitySelectionStyle::unavailable;
  return row.quantityIsOptional ? QuantitySelectionStyle::optional : QuantitySelectionStyle::required;
}

bool HealthType::isFluctuating() const { return healthTypeRow(*this).fluctuating; }

bool HealthType::isQuantityBased() const { return healthTypeRow(*this).measured == Measured::amount; }

bool HealthType::writesToHealthKit() const { return healthTypeRow(*this).writesBack; }

std::vector<qz::QZHKObjectType> HealthType::healthKitReadTypes(std::optional<TypeUnit> unit, TypeSpeeds speeds) const {
  const HealthTypeRow& row = healthTypeRow(*this);
  const QuantityRow* quantity = unit ? quantityRow(row.quantities, *unit) : nullptr;
  const auto& reads = quantity && !quantity->reads.empty() ? quantity->reads : row.reads;
  std::vector<qz::QZHKObjectType> types(reads.begin(), reads.end());
  if (!isPartOfSpeeds(row, speeds)) return types;
  for (const qz::QZHKObjectType type : row.readsToTellSpeeds) {
    if (std::find(types.begin(), types.end(), type) == types.end()) types.push_back(type);
  }
  return types;
}

qz::QZHKUpdateFrequency HealthType::healthKitBackgroundUpdateFrequency() const { return healthTypeRow(*this).update; }

std::span<const std::string_view> HealthType::suggestedIcons() const { return healthTypeRow(*this).icons; }

double HealthType::normalizeWaterValue(double quantity, TypeUnit unit) {
  const bool isCustomary = unit == TypeUnit::fluidOuncesUS || unit == TypeUnit::cupsUS;
  return cut(quantity, 10, isCustomary ? 1.0 : 0.1);
}

double HealthType::normalizeDistanceValue(double quantity, TypeUnit unit) {
  const bool isShort = unit == TypeUnit::distanceMeters || unit == TypeUnit::distanceYards;
  return isShort ? cut(quantity, 1, 1) : cut(quantity, 10, 0.1);
}

}  // namespace habitra
