#pragma once

#include <HabitraCore/AutomaticTaskType/DataSource.h>
#include <HabitraCore/AutomaticTaskType/DisplayTitle.h>
#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <HabitraCore/AutomaticTaskType/TaskTarget.h>
#include <HabitraCore/AutomaticTaskType/TypeExtra.h>
#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <HabitraCore/AutomaticTaskType/TypeUnit.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskMeasure.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// What completes a task in place of a person: which source drives it, what it has to reach and in which unit, and what
/// narrows the measurement down. A plain value. Coded with its field names as keys; the type is one text.
///
/// A measurement duration is the kind of period in which the task is measured; partial completions are the parts into
/// which a period's target is split.
struct AutomaticTaskType {
  /// The source: a health type, a timer or screen time.
  class TaskType {
   public:
    enum class Kind : std::uint8_t { healthKit, timer, screenTime };

    [[nodiscard]] static constexpr TaskType healthKit(HealthType type) { return TaskType(type.compactNumber()); }
    [[nodiscard]] static constexpr TaskType timer() { return TaskType(timerNumber); }
    [[nodiscard]] static constexpr TaskType screenTime() { return TaskType(screenTimeNumber); }
    /// The source of a text: a health type's raw value, "timer" or "screenTime"; none for any other.
    [[nodiscard]] static std::optional<TaskType> fromRawValue(std::string_view rawValue);
    /// All 82, in the order of the compact numbering.
    [[nodiscard]] static std::vector<TaskType> allCases();

    [[nodiscard]] constexpr Kind kind() const {
      return number_ == timerNumber ? Kind::timer : number_ == screenTimeNumber ? Kind::screenTime : Kind::healthKit;
    }
    /// The health type; none of a timer and of screen time.
    [[nodiscard]] std::optional<HealthType> healthType() const;
    [[nodiscard]] std::string_view rawValue() const;
    /// That of the health type, 80 for a timer, 81 for screen time.
    [[nodiscard]] constexpr std::int64_t compactNumber() const { return number_; }

    friend bool operator==(const TaskType&, const TaskType&) = default;

   private:
    static constexpr std::int64_t timerNumber = 80;
    static constexpr std::int64_t screenTimeNumber = 81;

    explicit constexpr TaskType(std::int64_t number) : number_(static_cast<std::uint8_t>(number)) {}

    std::uint8_t number_;
  };

  TaskType type = TaskType::timer();
  /// The target of a period, in `unit`: at most greatestQuantity, and not below 0 but for an energy deficit.
  double quantity = 0.0;
  std::optional<TypeUnit> unit;  ///< absent where there is no quantity
  TypeSpeeds speeds;
  std::optional<TypeExtra> extra;
  std::optional<DataSource> dataSource;  ///< absent: defaultDataSource() of the type

  /// The settings key under which ring data for demonstrations are kept.
  static constexpr std::string_view fakeActivityRingsStorageKey = "att.fakeActivityRings";
  /// A target is not split into fewer parts than this.
  static constexpr std::int64_t minPartialCompletions = 1;

  /// A timer of so many completions of so many seconds each. The unit is that in which the target is kept and shown;
  /// any but minutes and hours keeps seconds. REQUIRES: the seconds are finite and not below 0.
  [[nodiscard]] static AutomaticTaskType timer(double durationPerCompletion, std::int64_t numPartialCompletions,
                                               TypeUnit unit, DataSource dataSource);
  /// What a new task with this source starts with: unit, quantity and speeds, no extra, the default data source.
  [[nodiscard]] static AutomaticTaskType ofNewTask(const TaskType& type, TaskFrequencyPeriodType measurementDuration);

  /// Quantity, unit and speeds together; none without a unit.
  [[nodiscard]] std::optional<TaskTarget> taskTarget() const;
  void setTaskTarget(const TaskTarget& target);

  [[nodiscard]] bool usesHealthKit() const { return type.kind() == TaskType::Kind::healthKit; }
  /// Whether a timer of our own measures it.
  [[nodiscard]] bool isTimed() const;
  /// Whether what is left of the target can be shown counting down: there is an amount, and it only grows.
  [[nodiscard]] bool quantityCanCountdown() const;
  [[nodiscard]] QuantitySelectionStyle quantitySelectionStyle() const;
  /// What the rules measure such a task by, with the period's whole target; of a timed task in seconds. What does not
  /// grow towards its target (a balance of energies, a bedtime, what is only counted) is measured as a task by hand is:
  /// whoever qualifies a period says that it is complete.
  [[nodiscard]] TaskMeasure measure() const;

  /// The unit in which the health store is asked for figures: that of the target; without one the type's own, in which
  /// the latest record is shown (kilograms of a weight), or `count`.
  [[nodiscard]] qz::QZHKUnit healthKitCountUnit() const;
  /// How samples are put together; nothing where they are looked at one by one, as with the rings and bedtimes, nor for
  /// a timer and screen time. Types that record something have the latest amount, for showing: what counts towards
  /// completion is that there are samples.
  [[nodiscard]] qz::QZHKStatisticsOptions healthKitStatisticsOptions() const;
  /// A distance as progress in a unit; none where the unit is no distance.
  [[nodiscard]] static std::optional<double> taskProgressValueFromMetres(double metres, TypeUnit unit);

  /// The amounts to choose from for the present unit; none where there is no choice.
  [[nodiscard]] std::optional<ValueRange> quantityOptions(TaskFrequencyPeriodType measurementDuration) const;
  /// The neighbours of the quantity among them; none beyond the ends. Times of day go round the clock.
  [[nodiscard]] std::optional<double> nextQuantity(TaskFrequencyPeriodType measurementDuration) const;
  [[nodiscard]] std::optional<double> previousQuantity(TaskFrequencyPeriodType measurementDuration) const;
  /// Whether the task can be made harder or easier by another quantity.
  [[nodiscard]] bool canAdjustDifficulty() const;
  /// Whether that is done elsewhere: the goals of the activity rings are set with the health store.
  [[nodiscard]] bool canAdjustDifficultyExternally() const;

  /// Into how many parts a target can be split at most, is split to begin with, and into how many it would be sensible.
  /// Each stops the program when the quantity it has to cut to a whole number is not finite or does not fit 64 bits.
  [[nodiscard]] std::int64_t maxPartialCompletions(TaskFrequencyPeriodType measurementDuration) const;
  [[nodiscard]] std::int64_t defaultPartialCompletions(TaskFrequencyPeriodType measurementDuration) const;
  [[nodiscard]] std::int64_t suggestedNumPartialCompletions(TaskFrequencyPeriodType measurementDuration) const;

  /// The seconds of one part of a timed target, the whole of it to the millisecond, and the target made of such parts.
  /// Less than 1 part counts as 1.
  [[nodiscard]] double timerDurationPerCompletion(std::int64_t numPartialCompletions) const;
  void setTimerDuration(double duration, std::int64_t numPartialCompletions);

  /// Icon names, the best one first; `icon` is that one.
  [[nodiscard]] std::span<const std::string_view> suggestedIcons() const;
  [[nodiscard]] std::string_view icon() const { return suggestedIcons().front(); }

  /// The text of the target; see HealthType::displayTitleForQuantity.
  [[nodiscard]] HealthType::DisplayTitleType displayTitleForTargetQuantity(const DisplayTitleOptions& options) const;
  /// An amount as it is read, without its unit; with up to two decimals where the type has none.
  [[nodiscard]] std::string formattedQuantityNumber(double quantity) const;

  /// The durations to choose from for a timed task; none where the unit is no duration.
  [[nodiscard]] static std::optional<ValueRange> optionsForTimedTasks(TypeUnit unit,
                                                                      TaskFrequencyPeriodType measurementDuration);
  /// The numbers of drinks to choose from.
  [[nodiscard]] static ValueRange optionsForAlcoholConsumption(TaskFrequencyPeriodType measurementDuration);
  /// The kinds of frequency that an automatic task can have: all, since whether a period is complete can be told from
  /// its data however long it is.
  [[nodiscard]] static std::span<const TaskFrequency::DayMode> supportedFrequencyModes();

  friend bool operator==(const AutomaticTaskType&, const AutomaticTaskType&) = default;
};

/// `DataSource.default`: whose data count when nobody chose. This task's own for a timer and for workouts recorded
/// here, all for the rest, also where a timer of ours can write the data: other devices measure them, too.
[[nodiscard]] DataSource defaultDataSource(const AutomaticTaskType::TaskType& type);

void to_json(nlohmann::json& json, const AutomaticTaskType& type);
/// Throws qz::DecodingError naming the key that is missing or holds something else, an unknown type and a quantity that
/// is not finite, too great or, but for a balance of energies, below 0 among it. An unknown unit, speed or data source
/// is none.
void from_json(const nlohmann::json& json, AutomaticTaskType& type);

}  // namespace habitra

template <>
struct std::hash<habitra::AutomaticTaskType> {
  std::size_t operator()(const habitra::AutomaticTaskType& type) const noexcept;
};
