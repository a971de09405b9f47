#pragma once

#include <HabitraCore/Notifications/NotificationTimeZone.h>
#include <HabitraCore/Notifications/SoundEffect.h>
#include <HabitraCore/Notifications/TriggerRegion.h>
#include <HabitraCore/RawValue.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/UniqueID.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace habitra {

/// One reminder of a task: what sets it off, on which days, and how it sounds.
struct TaskReminder {
  enum class TriggerType : std::uint8_t {
    timeOfDay,
    timeOfDayMuted,  ///< at a time of day, but without sound
    location,
    durationAfterStart,   ///< of the timer, or of what is measured
    durationBeforeFinish  ///< of the same: before its target is reached
  };

  /// What sets a reminder off. Each type needs one of the other fields (neededField). One without it can be held and
  /// read, and never goes off; NotificationValidation.h complains of it. The rest is kept as it is, so that a person
  /// who changes the type and changes it back loses nothing.
  struct Trigger {
    /// Seconds: some 30 years, beyond any timer.
    static constexpr double longestDuration = 1'000'000'000;

    TriggerType type = TriggerType::timeOfDay;
    std::optional<qz::HHMMSS> timeOfDay;
    std::optional<TriggerRegion> region;
    std::optional<double> duration;  ///< seconds; 0 to longestDuration make sense

    /// Whether the field that the type needs is there.
    [[nodiscard]] bool isComplete() const;

    /// In the form of TriggerRegion::debugDescription; times as "22:30:00", the region in braces.
    [[nodiscard]] std::string debugDescription() const;

    friend bool operator==(const Trigger&, const Trigger&) = default;
  };

  /// As many as the longest period, a leap year, has days.
  static constexpr std::int64_t greatestDayIndex = 366;

  qz::UniqueID uniqueId;
  /// Whose clock the trigger's time of day and the weekdays are read in; none: the viewer's.
  std::optional<NotificationTimeZone> timeZone;
  Trigger trigger;
  qz::DaysOfWeek daysOfWeek = qz::DayOfWeek::every();  ///< the weekdays on which it applies

  /// For a task measured over more than a day: the days of the period on which it applies, counted from the first, and
  /// counted back from the last; 0 is the first day itself, or the last. Any number can be held and read; those beyond
  /// 0 to greatestDayIndex are days of no period. Where both are there either one will do, and where neither is every
  /// day will.
  std::optional<std::set<std::int64_t>> dayIndexesFromStart;
  std::optional<std::set<std::int64_t>> dayIndexesFromFinish;

  /// This one time it waits until that time of that day, by the clock of snoozeTimeZone; none: the viewer's.
  std::optional<qz::HHMMSS> snoozeTime;
  std::optional<qz::YYYYMMDD> snoozeDate;
  std::optional<NotificationTimeZone> snoozeTimeZone;

  std::optional<SoundEffect> sound;   ///< none: what the task's settings say
  std::optional<bool> timeSensitive;  ///< none: the default applies

  /// uniqueId, trigger, daysOfWeek, sound and timeSensitive in the form of TriggerRegion::debugDescription; the trigger
  /// in braces, weekdays as a list of their numbers, Sunday 0: "daysOfWeek=[1, 3]".
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const TaskReminder&, const TaskReminder&) = default;
};

/// The field of Trigger that a type cannot do without: "timeOfDay", "region" or "duration".
[[nodiscard]] const char* neededField(TaskReminder::TriggerType type);

/// Coded under the names of the fields; an absent field is an absent key. Weekdays and day indexes are lists in
/// ascending order.
void to_json(nlohmann::json& json, const TaskReminder::Trigger& trigger);
/// Throws qz::DecodingError naming the key that is missing or of the wrong kind, or an unknown type. Only the type
/// must be there.
void from_json(const nlohmann::json& json, TaskReminder::Trigger& trigger);

}  // namespace habitra

/// The same for a reminder. Its identifier is read from any text that qz::UniqueID::fromText reads; a snoozeDate must
/// be a day that the calendar has, weekdays numbers from 0 to 6. The form for a type without a
/// default: no reminder is without its identifier.
template <>
struct nlohmann::adl_serializer<habitra::TaskReminder> {
  static void to_json(json& json, const habitra::TaskReminder& reminder);
  [[nodiscard]] static habitra::TaskReminder from_json(const json& json);
};

/// The stored texts are short codes, not the names.
template <>
struct qz::RawValueTable<habitra::TaskReminder::TriggerType> {
  using T = habitra::TaskReminder::TriggerType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 5> rows{{
      {T::timeOfDay, "tod", "timeOfDay"},
      {T::timeOfDayMuted, "todm", "timeOfDayMuted"},
      {T::location, "loc", "location"},
      {T::durationAfterStart, "das", "durationAfterStart"},
      {T::durationBeforeFinish, "dbf", "durationBeforeFinish"},
  }};
};
