#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequencyPeriod.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string_view>
#include <variant>

/// How far a task has come in a period: one record per kind of measure, behind one interface.
///
/// Every record has the `period` it measures and answers four questions: progressShare(), a fraction of what the period
/// needs, where 1.0 means reached and more is kept; fill(), a full entry took the whole of it; addUnit(), a partial
/// entry added one unit; empty(), nothing is left of it. Nothing is rounded.
namespace habitra {

enum class TaskProgressType : std::uint8_t { discrete, continuous, timer, activity, simple, dateRange };

template <>
struct RawValueTable<TaskProgressType> {
  using T = TaskProgressType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 6> rows{{
      {T::discrete, "discrete", "discrete"},
      {T::continuous, "continuous", "continuous"},
      {T::timer, "timer", "timer"},
      {T::activity, "activity", "activity"},
      {T::simple, "simple", "simple"},
      {T::dateRange, "dateRange", "dateRange"},
  }};
};

/// For a task completed by hand, once a period.
struct TaskProgressSimple {
  static constexpr TaskProgressType type = TaskProgressType::simple;

  DatedPeriod period;
  double progressPct = 0.0;                   ///< share of what the period needs that is done
  double currentCompletionProgressPct = 0.0;  ///< share of the completion that is under way

  [[nodiscard]] double progressShare() const { return progressPct; }
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

/// A record of any kind. Another kind joins by standing in this list.
using TaskProgress = std::variant<TaskProgressSimple, TaskProgressDiscrete>;

/// A progress record that travels with its kind. Coded with the keys "type" (TaskProgressType) and "base" (the record
/// with its own field names as keys); decoding a "type" that is not one of the records throws qz::DecodingError.
struct TaskProgressCodable {
  TaskProgress base;

  [[nodiscard]] TaskProgressType type() const;
  [[nodiscard]] const DatedPeriod& period() const;
  [[nodiscard]] double progressShare() const;
  /// Whether the period's target was reached.
  [[nodiscard]] bool isReached() const { return progressShare() >= 1.0; }
  void fill();
  void addUnit();
  void empty();

  friend bool operator==(const TaskProgressCodable&, const TaskProgressCodable&) = default;
};

/// The record that a task completed by hand uses: discrete where its period needs more than one partial entry, simple
/// where it needs one; with `numUnits` entries made so far.
[[nodiscard]] TaskProgressCodable progressByHand(const DatedPeriod& period, std::int64_t expectedUnits,
                                                 std::int64_t numUnits = 0);

void to_json(nlohmann::json& json, const TaskProgressSimple& progress);
void from_json(const nlohmann::json& json, TaskProgressSimple& progress);
void to_json(nlohmann::json& json, const TaskProgressDiscrete& progress);
void from_json(const nlohmann::json& json, TaskProgressDiscrete& progress);
void to_json(nlohmann::json& json, const TaskProgressCodable& progress);
void from_json(const nlohmann::json& json, TaskProgressCodable& progress);

}  // namespace habitra
