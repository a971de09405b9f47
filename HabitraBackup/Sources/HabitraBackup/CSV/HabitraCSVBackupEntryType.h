#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryType.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// What an entry says, as the column "entry_type" spells it. The cases stand in the order of TaskLogEntryType. The
/// texts are the format: they follow no rule and never change.
enum class HabitraCSVBackupEntryType : std::uint8_t {
  unknown,
  completedManuallyFull,
  completedAutomaticallyFull,
  completedManuallyPartial,
  skippedManuallyFull,
  skippedAutomaticallyFull,
  allowableMissManuallyFull,
  allowableMissAutomaticallyFull,
  missedAutomaticallyFull,
  missedManuallyFull,
  missedManuallyPartial,
  missedAutomaticallyPartial,
  completedAutomaticallyPartial,
  timerManual,
  timerAutomatic,
  externalHealthData,
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::HabitraCSVBackupEntryType> {
  using T = habitra::HabitraCSVBackupEntryType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 16> rows{{
      {T::unknown, "unknown", "unknown"},
      {T::completedManuallyFull, "completed_manually", "completedManuallyFull"},
      {T::completedAutomaticallyFull, "completed_auto", "completedAutomaticallyFull"},
      {T::completedManuallyPartial, "completed_manually_partial", "completedManuallyPartial"},
      {T::skippedManuallyFull, "skipped_manually", "skippedManuallyFull"},
      {T::skippedAutomaticallyFull, "skipped_auto", "skippedAutomaticallyFull"},
      {T::allowableMissManuallyFull, "allowed_miss_manually", "allowableMissManuallyFull"},
      {T::allowableMissAutomaticallyFull, "allowed_miss_auto", "allowableMissAutomaticallyFull"},
      {T::missedAutomaticallyFull, "missed_auto", "missedAutomaticallyFull"},
      {T::missedManuallyFull, "missed_manually", "missedManuallyFull"},
      {T::missedManuallyPartial, "missed_manually_partial", "missedManuallyPartial"},
      {T::missedAutomaticallyPartial, "missed_auto_partial", "missedAutomaticallyPartial"},
      {T::completedAutomaticallyPartial, "completed_auto_partial", "completedAutomaticallyPartial"},
      {T::timerManual, "timer_manually", "timerManual"},
      {T::timerAutomatic, "timer_auto", "timerAutomatic"},
      {T::externalHealthData, "external_health_data", "externalHealthData"},
  }};
};

namespace habitra {

/// The same case of the other enumeration, by its position.
[[nodiscard]] HabitraCSVBackupEntryType csvEntryType(TaskLogEntryType type);
[[nodiscard]] TaskLogEntryType taskLogEntryType(HabitraCSVBackupEntryType type);

}  // namespace habitra
