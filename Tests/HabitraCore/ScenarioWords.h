#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskPause.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// How scenarios spell their values. Whatever cannot be read throws std::runtime_error.
namespace habitra::scenario_words {

[[nodiscard]] std::vector<std::string> wordsOf(const std::string& text);

[[nodiscard]] std::int64_t number(const std::string& text);

/// "2024-01-31".
[[nodiscard]] qz::YYYYMMDD day(const std::string& text);
/// "2024-01-03..2024-01-06", or one day.
[[nodiscard]] std::pair<qz::YYYYMMDD, qz::YYYYMMDD> span(const std::string& text);
/// Spans with commas between them, of which one may be without an end.
[[nodiscard]] std::vector<TaskPause> pauses(const std::string& text);

[[nodiscard]] qz::DayOfWeek weekday(const std::string& text);
[[nodiscard]] std::string_view nameOf(qz::DayOfWeek weekday);

[[nodiscard]] TaskLogEntryType entryType(const std::string& text);
[[nodiscard]] std::string_view nameOf(TaskLogEntryType type);

/// What stands after `due:`, for a task of which one completion needs `times` partial entries.
[[nodiscard]] TaskFrequency frequency(const std::string& text, std::int64_t times);
/// "to avoid", and not "to do".
[[nodiscard]] bool isToAvoid(const std::string& text);

}  // namespace habitra::scenario_words
