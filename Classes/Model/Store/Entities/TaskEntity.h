#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>

namespace habitra {

/// One habit. Days are integers (20240131, 0 for no day), times of day seconds since midnight; enumerations are the raw
/// values that the rules give them.
struct TaskEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::int64_t activeStreak = 0;  ///< read from old stores, not written; see TaskTemporalDataEntity
  std::int64_t bestStreak = 0;    ///< the same
  std::optional<std::string> cloudStatus;
  std::optional<qz::Moment> cloudStatusDate;
  std::optional<std::string> colorInfo;
  std::optional<qz::Moment> created;
  std::optional<std::string> createdTimeZone;
  std::optional<std::string> currentTimeZoneOverride;  ///< the zone its days are counted in, not the device's
  std::int32_t customReminderTime = 0;
  std::optional<std::string> customReminderType;
  std::int16_t daysMode = 0;
  std::int16_t daysOfWeek = 0;       ///< weekday bits, Sunday 1 to Saturday 64
  std::int16_t daysPerWeek = 0;      ///< completions wanted, or the interval in days
  std::int16_t daysTimesPerDay = 0;  ///< partial completions that make one completion
  std::int16_t displayOrder = 0;     ///< place among the tasks of its page
  std::int16_t firstDayOfWeekValue = 0;
  std::optional<std::string> imageName;
  bool isNegative = false;  ///< a habit to avoid
  std::int16_t last7NumSamples = 0;
  double last7Pct = 0;
  std::int16_t last30NumSamples = 0;
  double last30Pct = 0;
  std::optional<qz::Moment> lastChangedDifficulty;
  std::optional<std::string> lastChangedDifficultyStatus;
  std::optional<std::string> lastChangedDifficultyTimeZone;
  std::int32_t lastCompleted = 0;
  std::int32_t lastCompletedTime = 0;
  std::int32_t lastMissed = 0;
  std::optional<qz::Moment> lastProcessedDate;
  std::int32_t lastSkipped = 0;
  std::int32_t referenceDateValue = 0;  ///< anchor day of fortnights and day intervals
  std::int32_t snoozeDate = 0;
  std::int32_t snoozeTime = 0;
  std::int32_t startOfDayValue = 0;  ///< 0 means the app-wide start of day
  std::optional<std::string> status;
  std::optional<qz::Moment> statusDate;
  std::optional<std::string> title;
  std::optional<std::string> typeName;  ///< none for a task completed by hand
  double typeProgress = 0;
  std::int32_t typeProgressDate = 0;
  std::optional<std::string> typeSpeed;
  double typeTarget = 0;
  std::optional<std::string> typeUnit;
  std::optional<std::string> uniqueId;
  std::int64_t daysOfMonth = 0;           ///< bit set of the days of the month
  std::optional<Bytes> typeExtra;         ///< the coded extra and data source of an automatic type
  ObjectID userProfile = ObjectID::none;  ///< its page; none is page 1

  friend bool operator==(const TaskEntity&, const TaskEntity&) = default;
};

}  // namespace habitra
