#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>
#include <HabitraCore/AutomaticTaskType/QuantityCoding.h>
#include <HabitraCore/AutomaticTaskType/TitleBuilder.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace habitra {

namespace {

using Kind = AutomaticTaskType::TaskType::Kind;

// A minute more or less matters to an exercise, not to a morning's work.
constexpr std::array<QuantityRow, 3> timedQuantities{{
    {.unit = TypeUnit::durationMinutes, .lowest = 1, .highest = 240, .step = 1, .usual = 10},
    {.unit = TypeUnit::durationSeconds, .lowest = 5, .highest = 3'600, .step = 5, .usual = 60},
    {.unit = TypeUnit::durationHours, .lowest = 0.25, .highest = 16, .step = 0.25, .usual = 1},
}};

// A limit is thought of in quarters of an hour and whole hours.
constexpr std::array<QuantityRow, 2> screenTimeQuantities{{
    {.unit = TypeUnit::durationMinutes, .lowest = 5, .highest = 720, .step = 5, .usual = 60, .steps = timeSteps},
    {.unit = TypeUnit::durationHours, .lowest = 0.25, .highest = 16, .step = 0.25, .usual = 1, .steps = timeSteps},
}};

constexpr std::array<std::string_view, 3> timerIcons{"ic_timer", "ic_stopwatch", "ic_hourglass"};
constexpr std::array<std::string_view, 3> screenTimeIcons{"ic_screen_time", "ic_phone", "ic_laptop"};

constexpr std::array supportedModes = [] {
  std::array<TaskFrequency::DayMode, RawValueTable<TaskFrequency::DayMode>::rows.size()> modes{};
  for (std::size_t i = 0; i < modes.size(); ++i) modes[i] = RawValueTable<TaskFrequency::DayMode>::rows[i].value;
  return modes;
}();

/// The units that a source offers, the usual one first.
std::span<const QuantityRow> quantityRows(const AutomaticTaskType::TaskType& type) {
  if (type.kind() == Kind::timer) return timedQuantities;
  if (type.kind() == Kind::screenTime) return screenTimeQuantities;
  return healthTypeRow(*type.healthType()).quantities;
}

}  // namespace

std::optional<AutomaticTaskType::TaskType> AutomaticTaskType::TaskType::fromRawValue(std::string_view rawValue) {
  if (rawValue == timer().rawValue()) return timer();
  if (rawValue == screenTime().rawValue()) return screenTime();
  const auto healthType = habitra::fromRawValue<HealthType>(rawValue);
  return healthType ? std::optional(healthKit(*healthType)) : std::nullopt;
}

std::vector<AutomaticTaskType::TaskType> AutomaticTaskType::TaskType::allCases() {
  std::vector<TaskType> types;
  for (std::int64_t number = 0; number <= screenTimeNumber; ++number) types.push_back(TaskType(number));
  return types;
}

std::optional<HealthType> AutomaticTaskType::TaskType::healthType() const {
  if (kind() != Kind::healthKit) return std::nullopt;
  return HealthType::allCases()[number_];
}

std::string_view AutomaticTaskType::TaskType::rawValue() const {
  if (const auto health = healthType()) return habitra::rawValue(*health);
  return kind() == Kind::timer ? "timer" : "screenTime";
}

AutomaticTaskType AutomaticTaskType::ofNewTask(const TaskType& type, TaskFrequencyPeriodType measurementDuration) {
  AutomaticTaskType automatic{.type = type};
  if (const auto healthType = type.healthType()) {
    automatic.speeds = healthType->defaultSpeeds();
    if (const auto target = healthType->defaultTarget(measurementDuration)) automatic.setTaskTarget(*target);
    return automatic;
  }
  const QuantityRow& usual = quantityRows(type).front();
  automatic.setTaskTarget({.quantity = usualQuantity(usual, measurementDuration),
                           .unit = usual.unit,
                           .speeds = type.kind() == Kind::timer ? TypeSpeeds{TypeSpeed::timed} : TypeSpeeds{}});
  return automatic;
}

std::optional<TaskTarget> AutomaticTaskType::taskTarget() const {
  if (!unit) return std::nullopt;
  return TaskTarget{.quantity = quantity, .unit = *unit, .speeds = speeds};
}

void AutomaticTaskType::setTaskTarget(const TaskTarget& target) {
  quantity = target.quantity;
  unit = target.unit;
  speeds = target.speeds;
}

bool AutomaticTaskType::isTimed() const {
  if (type.kind() == Kind::timer) return true;
  const auto healthType = type.healthType();
  return healthType && healthType->canBeTimed() && speeds.contains(TypeSpeed::timed);
}

bool AutomaticTaskType::quantityCanCountdown() const {
  const auto healthType = type.healthType();
  return (!healthType || healthType->isQuantityBased()) && unit && unit->isQuantifiable();
}

QuantitySelectionStyle AutomaticTaskType::quantitySelectionStyle() const {
  const auto healthType = type.healthType();
  return healthType ? healthType->quantitySelectionStyle() : QuantitySelectionStyle::required;
}

TaskMeasure AutomaticTaskType::measure() const {
  if (isTimed()) {
    return {.kind = TaskMeasure::Kind::timed,
            .target = timerDurationPerCompletion(1),
            .unit = unit ? unit->timerUnit() : TaskProgressTimer::Unit::minutes};
  }
  const auto healthType = type.healthType();
  if (healthType && healthTypeRow(*healthType).measured == Measured::rings) return {.kind = TaskMeasure::Kind::rings};
  const bool isQuantityBased = !healthType || healthType->isQuantityBased();
  if (isQuantityBased && unit && unit->isQuantifiable())
    return {.kind = TaskMeasure::Kind::quantity, .target = quantity};
  return {};
}

qz::QZHKUnit AutomaticTaskType::healthKitCountUnit() const {
  if (unit) return unit->healthKit();
  const auto healthType = type.healthType();
  if (!healthType) return qz::QZHKUnit::count;
  const HealthTypeRow& row = healthTypeRow(*healthType);
  const bool needsUnit = !row.quantities.empty() && !row.quantityIsOptional;
  return needsUnit ? row.quantities.front().unit.healthKit() : row.latestIn;
}

qz::QZHKStatisticsOptions AutomaticTaskType::healthKitStatisticsOptions() const {
  const auto healthType = type.healthType();
  if (!healthType) return {};
  const qz::QZHKStatisticsOptions usual = healthTypeRow(*healthType).statistics;
  // What is a time covered in a unit of time is a sum in any other: the energy of workouts, or their number.
  const bool isTime = qz::dimension(healthKitCountUnit()) == qz::QZHKDimension::time;
  return usual == qz::QZHKStatisticsOptions::duration && !isTime ? qz::QZHKStatisticsOptions::cumulativeSum : usual;
}

std::optional<double> AutomaticTaskType::taskProgressValueFromMetres(double metres, TypeUnit unit) {
  return TypeUnit(TypeUnit::distanceMeters).convert(metres, unit);
}

std::optional<ValueRange> AutomaticTaskType::quantityOptions(TaskFrequencyPeriodType measurementDuration) const {
  const QuantityRow* const row = unit ? quantityRow(quantityRows(type), *unit) : nullptr;
  return row ? std::optional(habitra::quantityOptions(*row, measurementDuration)) : std::nullopt;
}

std::optional<double> AutomaticTaskType::nextQuantity(TaskFrequencyPeriodType measurementDuration) const {
  const auto options = quantityOptions(measurementDuration);
  if (!options) return std::nullopt;
  const auto next = options->next(quantity);
  return next || unit != TypeUnit::timeOfDay ? next : std::optional(options->lowest);
}

std::optional<double> AutomaticTaskType::previousQuantity(TaskFrequencyPeriodType measurementDuration) const {
  const auto options = quantityOptions(measurementDuration);
  if (!options) return std::nullopt;
  const auto previous = options->previous(quantity);
  return previous || unit != TypeUnit::timeOfDay ? previous : std::optional(options->highest);
}

bool AutomaticTaskType::canAdjustDifficulty() const {
  return quantityOptions(TaskFrequencyPeriodType::day).has_value();
}

bool AutomaticTaskType::canAdjustDifficultyExternally() const { return type.healthType() == HealthType::activity; }

std::span<const std::string_view> AutomaticTaskType::suggestedIcons() const {
  const auto healthType = type.healthType();
  if (healthType) return healthType->suggestedIcons();
  return type.kind() == Kind::timer ? std::span(timerIcons) : std::span(screenTimeIcons);
}

HealthType::DisplayTitleType AutomaticTaskType::displayTitleForTargetQuantity(
    const DisplayTitleOptions& options) const {
  const std::optional<double> shown = unit ? std::optional(quantity) : std::nullopt;
  const auto healthType = type.healthType();
  if (healthType) return healthType->displayTitleForQuantity(shown, unit, speeds, options);
  const TitleForm form = type.kind() == Kind::timer ? TitleForm::timer : TitleForm::screenTime;
  return displayTitle(form, std::nullopt, shown, unit, speeds, options);
}

std::string AutomaticTaskType::formattedQuantityNumber(double value) const {
  return habitra::formattedQuantityNumber(value, unit.value_or(TypeUnit::grams));
}

std::optional<ValueRange> AutomaticTaskType::optionsForTimedTasks(TypeUnit unit,
                                                                  TaskFrequencyPeriodType measurementDuration) {
  const QuantityRow* const row = quantityRow(timedQuantities, unit);
  return row ? std::optional(habitra::quantityOptions(*row, measurementDuration)) : std::nullopt;
}

ValueRange AutomaticTaskType::optionsForAlcoholConsumption(TaskFrequencyPeriodType measurementDuration) {
  return HealthType(HealthType::alcoholConsumption).quantityOptions(TypeUnit::drinks, measurementDuration).value();
}

std::span<const TaskFrequency::DayMode> AutomaticTaskType::supportedFrequencyModes() { return supportedModes; }

DataSource defaultDataSource(const AutomaticTaskType::TaskType& type) {
  const bool isRecordedHere = type.kind() == Kind::timer || type.healthType() == HealthType::habitraWorkout;
  return isRecordedHere ? DataSource::currentTask : DataSource::allData;
}

void to_json(nlohmann::json& json, const AutomaticTaskType& type) {
  json = {{"type", type.type.rawValue()}};
  encodeMember(json, "quantity", type.quantity);
  encodeMember(json, "unit", type.unit);
  encodeMember(json, "speeds", type.speeds);
  encodeMember(json, "extra", type.extra);
  encodeMember(json, "dataSource", type.dataSource);
}

void from_json(const nlohmann::json& json, AutomaticTaskType& type) {
  const auto name = decodeMember<std::string>(json, "type");
  const auto source = AutomaticTaskType::TaskType::fromRawValue(name);
  if (!source) refuseMember("type", name);
  const double quantity = decodeQuantity(json);
  if (!isQuantity(quantity, *source)) refuseMember("quantity", quantity);
  type = {.type = *source,
          .quantity = quantity,
          .unit = decodeMemberIfAny<TypeUnit>(json, "unit"),
          .speeds = decodeMember<TypeSpeeds>(json, "speeds"),
          .extra = decodeMemberIfAny<TypeExtra>(json, "extra"),
          .dataSource = decodeMemberIfAny<DataSource>(json, "dataSource")};
}

}  // namespace habitra

std::size_t std::hash<habitra::AutomaticTaskType>::operator()(const habitra::AutomaticTaskType& type) const noexcept {
  // The rest rarely differs between types that agree in these.
  auto mixed = static_cast<std::size_t>(type.type.compactNumber());
  mixed = mixed * 31 + std::hash<double>{}(type.quantity);
  mixed = mixed * 31 + std::hash<std::optional<habitra::TypeUnit>>{}(type.unit);
  return mixed * 31 + std::hash<habitra::TypeSpeeds>{}(type.speeds);
}
