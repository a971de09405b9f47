#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskPause.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// How scenarios spell their values. Whatever cannot be read throws std::runtime_error.
namespace habitra::scenario_words {

[[nodiscard]] std::vector<std::string> wordsOf(const std::string& text);

/// With every run of spaces made one.
[[nodiscard]] std::string evenedLine(const std::string& line);

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

/// "part", or "part(2.5)" with the amount that it reports. Without day and period.
[[nodiscard]] LoggedEntry entry(const std::string& text);
[[nodiscard]] std::string textOf(const LoggedEntry& entry);

/// What stands after `due:`, for a task of which one completion needs `times` partial entries.
[[nodiscard]] TaskFrequency frequency(const std::string& text, std::int64_t times);

/// What stands before and behind the colons of a file's first lines.
using Settings = std::map<std::string, std::string>;

/// Takes a setting out of the others.
[[nodiscard]] std::string take(Settings& settings, const std::string& name, const std::string& absent = "");
/// Takes those that make the rules of a task.
[[nodiscard]] TaskRules takeRules(Settings& settings);
/// Throws when a setting is left.
void expectNoneLeft(const Settings& settings);

/// Lines with bars between columns of equal width; the last one is left out where nothing stands in it.
[[nodiscard]] std::vector<std::string> linesOf(const std::vector<std::vector<std::string>>& table);

}  // namespace habitra::scenario_words
