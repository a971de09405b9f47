#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>
#include <variant>

/// How far a task has come in a period: one record per kind of measure, behind one interface.
///
/// Every record has the `period` it measures and answers four questions: progressShare(), a fraction of what the period
/// needs, where 1.0 means reached and more is kept; fill(), a full entry took the whole of it; addUnit(), a partial
/// entry added one unit; empty(), nothing is left of it. Nothing is rounded, and a share is always finite: it is 0
/// where the target is 0 or less. An expected count below 1 in a measured record counts as 1.
///
/// Records are coded with their field names as keys. They are read strictly (QZDateTime/CodedForm.h): qz::DecodingError
/// names the key that is missing or holds something else, a number that is not finite among it. Counts and amounts
/// above what is needed are kept as they are.
namespace habitra {

enum class TaskProgressType : std::uint8_t { discrete, continuous, timer, activity, simple, dateRange };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskProgressType> {
  using T = habitra::TaskProgressType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 6> rows{{
      {T::discrete, "discrete", "discrete"},
      {T::continuous, "continuous", "continuous"},
      {T::timer, "timer", "timer"},
      {T::activity, "activity", "activity"},
      {T::simple, "simple", "simple"},
      {T::dateRange, "dateRange", "dateRange"},
  }};
};

namespace habitra {

/// For a task completed by hand, once a period.
struct TaskProgressSimple {
  static constexpr TaskProgressType type = TaskProgressType::simple;

  DatedPeriod period;
  double progressPct = 0.0;                   ///< share of what the period needs that is done
  double currentCompletionProgressPct = 0.0;  ///< share of the completion that is under way

  [[nodiscard]] double progressShare() const;
  void fill();
  void addUnit();
  void empty();

  friend bool operator==(const TaskProgressSimple&, const TaskProgressSimple&) = default;
};

/// For a task completed by hand, several times a period.
struct TaskProgressDiscrete {
  static constexpr TaskProgressType type = TaskProgressType::discrete;

  DatedPeriod period;
  std::int64_t expectedCompletions = 1;  ///< partial entries that the period needs
  std::int64_t numCompletions = 0;       ///< partial entries made; may be more than needed

  /// 0 when nothing is expected.
  [[nodiscard]] double progressShare() const;
  void fill();
  void addUnit();  ///< Stops the program on overflow.
  void empty();

  friend bool operator==(const TaskProgressDiscrete&, const TaskProgressDiscrete&) = default;
};

/// For an amount measured in the task's own unit (steps, litres).
struct TaskProgressContinuous {
  static constexpr TaskProgressType type = TaskProgressType::continuous;

  DatedPeriod period;
  std::int64_t expectedCompletions = 1;  ///< partial entries that make the target; each is worth an equal part of it
  double targetValue = 0.0;              ///< the amount to reach
  double currentValue = 0.0;             ///< the amount reached; may be more

  [[nodiscard]] double progressShare() const;
  void fill();
  void addUnit();  ///< amountAfterUnit(); no effect where the target is 0 or less.
  void empty();

  friend bool operator==(const TaskProgressContinuous&, const TaskProgressContinuous&) = default;
};

/// For a duration, in one or several completions of equal length. Durations are in seconds, whatever the unit.
struct TaskProgressTimer {
  static constexpr TaskProgressType type = TaskProgressType::timer;

  /// The unit in which durations are shown.
  enum class Unit : std::uint8_t { hours, minutes, seconds };

  DatedPeriod period;
  Unit unit = Unit::minutes;
  std::int64_t expectedCompletions = 1;    ///< completions that the period needs
  std::int64_t numCompletions = 0;         ///< completions made; may be more
  double totalTargetDuration = 0.0;        ///< what the whole period needs, all completions together
  double currentCompletionDuration = 0.0;  ///< timed towards the completion that is under way

  /// The completions made, each lasting total ÷ expected, and the one under way, as a share of the total.
  [[nodiscard]] double progressShare() const;
  void fill();
  /// One completion more, which takes the duration under way with it. A target that was reached by the duration alone
  /// stays reached. Stops the program on overflow.
  void addUnit();
  void empty();
  /// More time towards the completion under way, in seconds; below 0, or not a number, there is none.
  void addDuration(double seconds);

  friend bool operator==(const TaskProgressTimer&, const TaskProgressTimer&) = default;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskProgressTimer::Unit> {
  using T = habitra::TaskProgressTimer::Unit;
  static constexpr std::array<RawValueRow<T, std::string_view>, 3> rows{{
      {T::hours, "h", "hours"},
      {T::minutes, "m", "minutes"},
      {T::seconds, "s", "seconds"},
  }};
};

namespace habitra {

/// How much of the period's own time has gone by. For display only: entries leave it as it is, and it is never reached,
/// so that no status follows from it.
struct TaskProgressDateRange {
  static constexpr TaskProgressType type = TaskProgressType::dateRange;

  qz::HHMMSS startOfDay;                        ///< when the task's day begins
  qz::TimeZone timeZone = qz::TimeZone::utc();  ///< in which it does
  double scale = 1.0;                           ///< factor on the elapsed share: at 2 it is full half-way
  std::optional<qz::Moment> currentDate;        ///< the moment up to which time has gone by; absent: not known, share 0
  DatedPeriod period;

  /// scale × time from the first moment of the period to currentDate ÷ time to the first moment of the day after the
  /// period, at least 0 and at most 1. REQUIRES: both moments lie in the range of a Moment; a record that was read
  /// does.
  [[nodiscard]] double progressShare() const;
  void fill() {}
  void addUnit() {}
  void empty() {}

  friend bool operator==(const TaskProgressDateRange&, const TaskProgressDateRange&) = default;
};

/// For the three activity rings, each 1.0 when it is closed. More is kept, but counts as 1.0.
struct TaskProgressActivityRings {
  static constexpr TaskProgressType type = TaskProgressType::activity;

  DatedPeriod period;
  double energy = 0.0;
  double exercise = 0.0;
  double stand = 0.0;

  /// The mean of the three, each cut at 1.0.
  [[nodiscard]] double progressShare() const;
  void fill();
  void addUnit() { fill(); }  ///< There is one unit: it closes all three.
  void empty();

  friend bool operator==(const TaskProgressActivityRings&, const TaskProgressActivityRings&) = default;
};

/// A record of any kind. Another kind joins by standing in this list.
using TaskProgress = std::variant<TaskProgressSimple, TaskProgressDiscrete, TaskProgressContinuous, TaskProgressTimer,
                                  TaskProgressDateRange, TaskProgressActivityRings>;

/// The nearest finite number; 0 for what is no number.
[[nodiscard]] double nearestFinite(double value);

/// The worth of so many partial entries of a target that `expectedCompletions` of them make: exactly the target (or a
/// multiple of it) where they come out even. 0 where the target is 0 or less; never infinite.
[[nodiscard]] double amountOfUnits(std::int64_t numUnits, double target, std::int64_t expectedCompletions);

/// An amount after one more partial entry of such a target. Rounding never adds up: from nothing, as many as are
/// expected come to exactly the target.
[[nodiscard]] double amountAfterUnit(double amount, double target, std::int64_t expectedCompletions);

/// The share in percent as it is shown: rounded down, so that 100 means done and 99 not quite. 29 of 100 is 29. Below 0
/// it is 0, and more than 100 is shown.
[[nodiscard]] std::int64_t displayedPercentage(double progressShare);

/// A progress record that travels with its kind. Coded with the keys "type" (TaskProgressType) and "base" (the record
/// with its own field names as keys); decoding a "type" that is not one of the records throws qz::DecodingError.
struct TaskProgressCodable {
  TaskProgress base;

  [[nodiscard]] TaskProgressType type() const;
  [[nodiscard]] const DatedPeriod& period() const;
  [[nodiscard]] double progressShare() const;
  /// Whether the period's target was reached; of a date range never.
  [[nodiscard]] bool isReached() const { return type() != TaskProgressType::dateRange && progressShare() >= 1.0; }
  void fill();
  void addUnit();
  void empty();

  friend bool operator==(const TaskProgressCodable&, const TaskProgressCodable&) = default;
};

void to_json(nlohmann::json& json, const TaskProgressSimple& progress);
void from_json(const nlohmann::json& json, TaskProgressSimple& progress);
void to_json(nlohmann::json& json, const TaskProgressDiscrete& progress);
void from_json(const nlohmann::json& json, TaskProgressDiscrete& progress);
void to_json(nlohmann::json& json, const TaskProgressContinuous& progress);
void from_json(const nlohmann::json& json, TaskProgressContinuous& progress);
void to_json(nlohmann::json& json, const TaskProgressTimer& progress);
void from_json(const nlohmann::json& json, TaskProgressTimer& progress);
/// "timeZone" is the zone's identifier, "currentDate" ISO 8601; absent when there is none.
void to_json(nlohmann::json& json, const TaskProgressDateRange& progress);
void from_json(const nlohmann::json& json, TaskProgressDateRange& progress);
void to_json(nlohmann::json& json, const TaskProgressActivityRings& progress);
void from_json(const nlohmann::json& json, TaskProgressActivityRings& progress);
void to_json(nlohmann::json& json, const TaskProgressCodable& progress);
void from_json(const nlohmann::json& json, TaskProgressCodable& progress);

}  // namespace habitra
