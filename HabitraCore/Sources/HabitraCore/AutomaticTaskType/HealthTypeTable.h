#pragma once

#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

/// What is known of each health type, as data: a row per type, in order of declaration. The rows stand in
/// HealthTypeTableActivity.cpp, HealthTypeTableNutrition.cpp and HealthTypeTableRecords.cpp and can be checked there
/// without reading code. For sources of this module.
namespace habitra {

/// A few values held in place, so that a row of a table is written in one piece. Longer than `capacity` does not
/// compile.
template <typename T, std::size_t capacity>
class ShortList {
 public:
  constexpr ShortList() = default;
  constexpr ShortList(std::initializer_list<T> values) : size_(values.size()) {
    std::copy(values.begin(), values.end(), values_.begin());
  }

  constexpr operator std::span<const T>() const { return {begin(), size_}; }  // NOLINT(google-explicit-constructor)

  [[nodiscard]] constexpr const T* begin() const { return values_.data(); }
  [[nodiscard]] constexpr const T* end() const { return values_.data() + size_; }
  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr bool empty() const { return size_ == 0; }
  /// REQUIRES: not empty.
  [[nodiscard]] constexpr const T& front() const { return values_.front(); }

 private:
  std::array<T, capacity> values_{};
  std::size_t size_ = 0;
};

/// How the steps between the amounts on offer grow with the period: the day's step times this.
struct PeriodSteps {
  double week;
  double fortnight;
  double month;
  double year;
};
/// Amounts of seven days are chosen in coarser steps than those of one: 500 steps become 2,500, then 5,000, 10,000 and
/// 50,000.
inline constexpr PeriodSteps coarserSteps{.week = 5, .fortnight = 10, .month = 20, .year = 100};
/// Halves and quarters (of a mile) become wholes: a quarter becomes 1, then 2, 5 and 25.
inline constexpr PeriodSteps wholeSteps{.week = 4, .fortnight = 8, .month = 20, .year = 100};
/// Times: 5 minutes become 10, then 20, 30 and 120; a quarter of an hour becomes half an hour, then 1, 1.5 and 6 hours.
inline constexpr PeriodSteps timeSteps{.week = 2, .fortnight = 4, .month = 6, .year = 24};
/// Few things, of which each one matters in any period.
inline constexpr PeriodSteps singleSteps{.week = 1, .fortnight = 1, .month = 1, .year = 5};

/// A unit that a type offers, with the amounts to choose from in a day, which are multiples of the step. A longer
/// period offers as many times the highest and the usual amount as it has days (7, 14, 30, 365), cut and rounded to
/// amounts on offer; the lowest and the step are grown by `steps`. A time of day is the same in every period.
struct QuantityRow {
  TypeUnit unit = TypeUnit::steps;  ///< every row names its own
  double lowest;
  double highest;
  double step;
  double usual;  ///< what a new task starts with
  PeriodSteps steps = coarserSteps;
  /// The health data to read for this unit where they are not those of the type.
  ShortList<qz::QZHKObjectType, 4> reads = {};
};

/// What makes the progress of a period.
enum class Measured : std::uint8_t {
  rings,      ///< the three activity rings
  amount,     ///< a sum of quantities, or a time covered
  balance,    ///< one amount less another
  timeOfDay,  ///< when it happened
  samples,    ///< how often it happened; no quantity
};

/// Which title a type has; the words stand in the table of a language (TitleTexts.h).
enum class TitleForm : std::uint8_t {
  activityRings,
  sleep,
  inBed,
  bedtime,
  standHours,
  standMinutes,
  rollHours,
  moveMinutes,
  walkOrRun,
  climbFlights,
  activeEnergy,
  wheelchairDistance,
  wheelchairPushes,
  workout,
  exercise,
  cycle,
  swim,
  mindfulMinutes,
  ownWorkout,
  water,
  dietaryEnergy,
  nutrient,
  energyDeficit,
  record,
  brush,
  floss,
  heartEvent,
  handwashing,
  alcohol,
  timer,
  screenTime,
};

struct HealthTypeRow {
  HealthType type;
  Measured measured;
  ShortList<QuantityRow, 5> quantities = {};  ///< the default unit first; none: no quantity
  bool quantityIsOptional = false;            ///< a task may do without one; then each sample counts
  ShortList<TypeSpeed, 8> speeds = {};        ///< on offer, in the order in which they are shown
  HealthType::SpeedSelectionType speedSelection = HealthType::SpeedSelectionType::noSpeed;
  TypeSpeeds defaultSpeeds = {};
  ShortList<qz::QZHKObjectType, 4> reads;
  /// Read as well when only some of the speeds on offer are chosen, to tell them apart.
  ShortList<qz::QZHKObjectType, 4> readsToTellSpeeds = {};
  /// How samples are put together; empty where they are looked at one by one. A time covered is meant for units of
  /// time, in other units it is a sum: the energy of workouts.
  qz::QZHKStatisticsOptions statistics;
  /// Without a quantity: the unit of figures, in which the latest amount is shown; `count` where samples are counted.
  qz::QZHKUnit latestIn = qz::QZHKUnit::count;
  qz::QZHKUpdateFrequency update;
  bool fluctuating = false;
  bool writesBack = false;
  ShortList<std::string_view, 4> icons;  ///< the best one first
  TitleForm title;
};

[[nodiscard]] const HealthTypeRow& healthTypeRow(HealthType type);
/// The row of a unit among those that are offered; null for any other unit.
[[nodiscard]] const QuantityRow* quantityRow(std::span<const QuantityRow> rows, TypeUnit unit);

inline constexpr std::size_t numActivityRows = static_cast<std::size_t>(HealthType::dietaryDrinkWater);
inline constexpr std::size_t numNutritionRows = static_cast<std::size_t>(HealthType::recordWeight) - numActivityRows;
inline constexpr std::size_t numRecordRows =
    RawValueTable<HealthType>::rows.size() - numActivityRows - numNutritionRows;

/// The parts of the table, in order: activity to habitraWorkout, dietaryDrinkWater to energyDeficit, and from
/// recordWeight on.
[[nodiscard]] std::span<const HealthTypeRow, numActivityRows> activityRows();
[[nodiscard]] std::span<const HealthTypeRow, numNutritionRows> nutritionRows();
[[nodiscard]] std::span<const HealthTypeRow, numRecordRows> recordRows();

/// Whether the rows of a part stand in order of declaration and begin with `first`: the lookup goes by place.
[[nodiscard]] constexpr bool isRunOfTypes(std::span<const HealthTypeRow> rows, HealthType first) {
  std::int64_t number = first.compactNumber();
  return std::all_of(rows.begin(), rows.end(),
                     [&number](const HealthTypeRow& row) { return row.type.compactNumber() == number++; });
}

/// The amounts that a row offers in a period, the highest one among them, and the one that a new task starts with,
/// which is one of them.
[[nodiscard]] ValueRange quantityOptions(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration);
[[nodiscard]] double usualQuantity(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration);

}  // namespace habitra
