#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/HHMMSS.h>

#include <string>
#include <string_view>

/// Values of settings as a person writes them, in English and in any case. Each text that is given out is read back as
/// the same value. What cannot be read is a SettingError that says what can.
namespace habitra {

/// "monday"; on reading, the first three letters or more.
[[nodiscard]] std::string weekdayText(qz::DayOfWeek day);
[[nodiscard]] qz::DayOfWeek weekdayFromText(std::string_view text);

/// "04:00", "04:00:30"; on reading also "4:00", "midnight" and "noon".
[[nodiscard]] std::string timeOfDayText(qz::HHMMSS time);
[[nodiscard]] qz::HHMMSS timeOfDayFromText(std::string_view text);

/// How often something is to be done:
///
///   frequency = rule ["x" COUNT]                   the times it is done on each occasion
///   rule      = "every day" / "daily"
///             / "weekdays" / "weekends" / weekday *(["," / "and"] weekday)
///             / "every" COUNT "days" / "every other day"
///             / COUNT ("day" / "days") ("a" / "per") period     so many different days of each
///             / COUNT ("time" / "times") ("a" / "per") period   so many times in each, on any days
///             / ("day" / "days") monthday *(["," / "and"] monthday)
///   period    = "week" / "fortnight" / "month" / "year"
///   monthday  = "1" to "31" / "last" / "last-1" to "last-7"
///
/// Also refuses what problems() finds.
[[nodiscard]] std::string frequencyText(const TaskFrequency& frequency);
[[nodiscard]] TaskFrequency frequencyFromText(std::string_view text);

}  // namespace habitra
