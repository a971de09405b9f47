#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>

/// What an entry of a task's log says. The raw value is what the store keeps; the values are not in the order of
/// declaration, and both are fixed: the order is that in which exchange formats list the types.
namespace habitra {

enum class TaskLogEntryType : std::int16_t {
  unknown = 0,                          ///< an undo: the period is unchecked again
  completedManuallyFull = 1,            ///< a person finished the whole period
  completedAutomaticallyFull = 2,       ///< a measurement did, or a decided past was sealed
  completedManuallyPartial = 6,         ///< one unit of a period that needs several
  skippedManuallyFull = 3,              ///< left out on purpose
  skippedAutomaticallyFull = 4,         ///< filled in: nothing was due
  allowableMissManuallyFull = 13,       ///< a task to avoid failed within its allowance
  allowableMissAutomaticallyFull = 14,  ///< the same, found by a measurement
  missedAutomaticallyFull = 5,          ///< filled in: due and not done
  missedManuallyFull = 7,               ///< a person says it was missed, or that what is to be avoided happened
  missedManuallyPartial = 8,            ///< one unit of a failure
  missedAutomaticallyPartial = 9,
  completedAutomaticallyPartial = 10,
  timerManual = 11,         ///< a timer run; decides nothing by itself
  timerAutomatic = 12,      ///< the same, started by the system
  externalHealthData = 15,  ///< health data from elsewhere; decides nothing by itself
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskLogEntryType> {
  using T = habitra::TaskLogEntryType;
  static constexpr std::array<RawValueRow<T, std::int16_t>, 16> rows{{
      {T::unknown, 0, "unknown"},
      {T::completedManuallyFull, 1, "completedManuallyFull"},
      {T::completedAutomaticallyFull, 2, "completedAutomaticallyFull"},
      {T::completedManuallyPartial, 6, "completedManuallyPartial"},
      {T::skippedManuallyFull, 3, "skippedManuallyFull"},
      {T::skippedAutomaticallyFull, 4, "skippedAutomaticallyFull"},
      {T::allowableMissManuallyFull, 13, "allowableMissManuallyFull"},
      {T::allowableMissAutomaticallyFull, 14, "allowableMissAutomaticallyFull"},
      {T::missedAutomaticallyFull, 5, "missedAutomaticallyFull"},
      {T::missedManuallyFull, 7, "missedManuallyFull"},
      {T::missedManuallyPartial, 8, "missedManuallyPartial"},
      {T::missedAutomaticallyPartial, 9, "missedAutomaticallyPartial"},
      {T::completedAutomaticallyPartial, 10, "completedAutomaticallyPartial"},
      {T::timerManual, 11, "timerManual"},
      {T::timerAutomatic, 12, "timerAutomatic"},
      {T::externalHealthData, 15, "externalHealthData"},
  }};
};

namespace habitra {

/// A set of entry types, one bit per raw value; membership is one instruction.
class TaskLogEntryTypes {
 public:
  constexpr TaskLogEntryTypes(std::initializer_list<TaskLogEntryType> types) {
    for (const TaskLogEntryType type : types) bits_ |= bit(type);
  }

  [[nodiscard]] constexpr bool contains(TaskLogEntryType type) const { return (bits_ & bit(type)) != 0; }

  [[nodiscard]] friend constexpr TaskLogEntryTypes operator|(TaskLogEntryTypes a, TaskLogEntryTypes b) {
    a.bits_ |= b.bits_;
    return a;
  }
  friend constexpr bool operator==(TaskLogEntryTypes, TaskLogEntryTypes) = default;

 private:
  static constexpr std::uint32_t bit(TaskLogEntryType type) {
    return std::uint32_t{1} << static_cast<std::uint32_t>(type);
  }

  std::uint32_t bits_ = 0;
};

// The lists follow the words of the names; an allowed miss is not a miss.

/// Those that decide a whole period.
inline constexpr TaskLogEntryTypes allFullTypes{
    TaskLogEntryType::completedManuallyFull,     TaskLogEntryType::completedAutomaticallyFull,
    TaskLogEntryType::skippedManuallyFull,       TaskLogEntryType::skippedAutomaticallyFull,
    TaskLogEntryType::allowableMissManuallyFull, TaskLogEntryType::allowableMissAutomaticallyFull,
    TaskLogEntryType::missedAutomaticallyFull,   TaskLogEntryType::missedManuallyFull};
inline constexpr TaskLogEntryTypes allPartialTypes{
    TaskLogEntryType::completedManuallyPartial, TaskLogEntryType::completedAutomaticallyPartial,
    TaskLogEntryType::missedManuallyPartial, TaskLogEntryType::missedAutomaticallyPartial};
inline constexpr TaskLogEntryTypes allAutomaticTypes{TaskLogEntryType::completedAutomaticallyFull,
                                                     TaskLogEntryType::skippedAutomaticallyFull,
                                                     TaskLogEntryType::allowableMissAutomaticallyFull,
                                                     TaskLogEntryType::missedAutomaticallyFull,
                                                     TaskLogEntryType::missedAutomaticallyPartial,
                                                     TaskLogEntryType::completedAutomaticallyPartial,
                                                     TaskLogEntryType::timerAutomatic};
inline constexpr TaskLogEntryTypes allManualTypes{TaskLogEntryType::completedManuallyFull,
                                                  TaskLogEntryType::completedManuallyPartial,
                                                  TaskLogEntryType::skippedManuallyFull,
                                                  TaskLogEntryType::allowableMissManuallyFull,
                                                  TaskLogEntryType::missedManuallyFull,
                                                  TaskLogEntryType::missedManuallyPartial,
                                                  TaskLogEntryType::timerManual};
inline constexpr TaskLogEntryTypes allTimerTypes{TaskLogEntryType::timerManual, TaskLogEntryType::timerAutomatic};
inline constexpr TaskLogEntryTypes allSkipTypes{TaskLogEntryType::skippedManuallyFull,
                                                TaskLogEntryType::skippedAutomaticallyFull};
inline constexpr TaskLogEntryTypes allCompletedTypes{
    TaskLogEntryType::completedManuallyFull, TaskLogEntryType::completedAutomaticallyFull,
    TaskLogEntryType::completedManuallyPartial, TaskLogEntryType::completedAutomaticallyPartial};
inline constexpr TaskLogEntryTypes allMissedTypes{
    TaskLogEntryType::missedAutomaticallyFull, TaskLogEntryType::missedManuallyFull,
    TaskLogEntryType::missedManuallyPartial, TaskLogEntryType::missedAutomaticallyPartial};
inline constexpr TaskLogEntryTypes allAllowableMissTypes{TaskLogEntryType::allowableMissManuallyFull,
                                                         TaskLogEntryType::allowableMissAutomaticallyFull};

[[nodiscard]] constexpr bool isFull(TaskLogEntryType type) { return allFullTypes.contains(type); }
[[nodiscard]] constexpr bool isPartial(TaskLogEntryType type) { return allPartialTypes.contains(type); }
[[nodiscard]] constexpr bool isAutomatic(TaskLogEntryType type) { return allAutomaticTypes.contains(type); }
[[nodiscard]] constexpr bool isTimer(TaskLogEntryType type) { return allTimerTypes.contains(type); }
[[nodiscard]] constexpr bool isSkipped(TaskLogEntryType type) { return allSkipTypes.contains(type); }
[[nodiscard]] constexpr bool isAllowableMissFull(TaskLogEntryType type) { return allAllowableMissTypes.contains(type); }
[[nodiscard]] constexpr bool isCompletedFullOrPartial(TaskLogEntryType type) {
  return allCompletedTypes.contains(type);
}
[[nodiscard]] constexpr bool isMissedFullOrPartial(TaskLogEntryType type) { return allMissedTypes.contains(type); }
[[nodiscard]] constexpr bool isCompletedFull(TaskLogEntryType type) {
  return type == TaskLogEntryType::completedManuallyFull || type == TaskLogEntryType::completedAutomaticallyFull;
}
[[nodiscard]] constexpr bool isMissedFull(TaskLogEntryType type) { return isMissedFullOrPartial(type) && isFull(type); }
[[nodiscard]] constexpr bool isMissedPartial(TaskLogEntryType type) {
  return isMissedFullOrPartial(type) && isPartial(type);
}
[[nodiscard]] constexpr bool isCompletedPartial(TaskLogEntryType type) {
  return isCompletedFullOrPartial(type) && isPartial(type);
}

/// Whether an entry of this type says that the task was being kept: completions, misses, allowed misses and skips,
/// full or partial, do; an undo, a timer run and health data do not. Only such entries move the first day of a history.
[[nodiscard]] constexpr bool marksHistory(TaskLogEntryType type) { return isFull(type) || isPartial(type); }

/// Coded as the raw value. Decoding an unknown one throws qz::DecodingError.
void to_json(nlohmann::json& json, TaskLogEntryType type);
void from_json(const nlohmann::json& json, TaskLogEntryType& type);

}  // namespace habitra
