#include "Scenario.h"

#include "ScenarioWords.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace habitra {

namespace {

using namespace scenario_words;

std::int32_t integer(const qz::YYYYMMDD& date) { return static_cast<std::int32_t>(date.intValue()); }

bool isRemark(const std::string& line) { return line.empty() || line.starts_with('#'); }
bool isFigure(const std::string& line) { return line.starts_with("last:") || line.starts_with("shares:"); }
bool isPeriod(const std::string& line) { return line[0] >= '0' && line[0] <= '9'; }

void applySettings(Scenario& scenario, Settings settings) {
  scenario.rules = takeRules(settings);
  // The log is in order of days.
  const auto first = std::ranges::find_if(scenario.log, marksHistory, &LoggedEntry::entryType);
  HistoryScope::LogBeginning logBegins;
  if (!scenario.log.empty()) logBegins.firstEntryDay = qz::YYYYMMDD::fromRawValue(scenario.log.front().entryDate);
  if (first != scenario.log.end()) logBegins.firstKeptDay = qz::YYYYMMDD::fromRawValue(first->entryDate);
  const qz::YYYYMMDD created = day(take(settings, "created"));
  std::optional<qz::YYYYMMDD> filled;
  if (settings.contains("filled")) filled = day(take(settings, "filled"));
  scenario.scope = HistoryScope::of(created, logBegins, filled, day(take(settings, "today")));
  expectNoneLeft(settings);
}

TaskFrequencyPeriodType typeIn(const std::vector<std::string>& words) {
  for (const auto& row : RawValueTable<TaskFrequencyPeriodType>::rows)
    if (std::ranges::count(words, row.name) != 0) return row.value;
  return TaskFrequencyPeriodType::day;
}

/// The first day from `from` on whose text ends like this: "12" or "03-12".
qz::YYYYMMDD dayEnding(const std::string& ending, const qz::YYYYMMDD& from, const qz::YYYYMMDD& to) {
  for (qz::YYYYMMDD date = from; date <= to; date = date.nextDay())
    if (date.debugDescription().ends_with("-" + ending)) return date;
  throw std::runtime_error("the period has no day " + ending);
}

void readEntries(Scenario& scenario, const Scenario::Line& line, TaskFrequencyPeriodType type, std::string column) {
  if (const auto bracket = column.find('['); bracket != std::string::npos) column.resize(bracket);
  const auto from = *qz::YYYYMMDD::fromRawValue(line.from);
  const auto to = *qz::YYYYMMDD::fromRawValue(line.to);
  const auto log = [&](const std::string& word, const qz::YYYYMMDD& date) {
    const bool isDay = type == TaskFrequencyPeriodType::day;
    LoggedEntry& logged = scenario.log.emplace_back(entry(word));
    logged.order = static_cast<std::int64_t>(scenario.log.size());
    logged.entryDate = integer(date);
    logged.periodFrom = isDay ? integer(date) : line.from;
    logged.periodTo = isDay ? integer(date) : line.to;
    logged.periodType = type;
  };
  std::vector<std::string> words = wordsOf(column);
  if (type != TaskFrequencyPeriodType::day) {
    for (const std::string& word : words) {
      const auto colon = word.find(':');
      if (colon == std::string::npos) throw std::runtime_error("an entry of a longer period without its day: " + word);
      log(word.substr(colon + 1), dayEnding(word.substr(0, colon), from, to));
    }
    return;
  }
  const bool isEach = !words.empty() && words.back() == "each";
  if (isEach) words.pop_back();
  if (!words.empty() && line.from != line.to && !isEach)
    throw std::runtime_error("entries of several days need 'each'");
  for (qz::YYYYMMDD date = from; date <= to; date = date.nextDay())
    for (const std::string& word : words) log(word, date);
}

void readPeriod(Scenario& scenario, const std::string& text) {
  const auto bar = text.find('|');
  const std::vector<std::string> words = wordsOf(text.substr(0, bar));
  const auto [from, to] = span(words[0]);
  Scenario::Line line{.from = integer(from), .to = integer(to), .remarks = std::move(scenario.remarks)};
  scenario.remarks.clear();
  if (!scenario.lines.empty() && line.from <= scenario.lines.back().to)
    throw std::runtime_error("not after the line before");
  if (bar != std::string::npos) {
    const auto end = text.find('|', bar + 1);
    readEntries(scenario, line, typeIn(words), text.substr(bar + 1, end == std::string::npos ? end : end - bar - 1));
  }
  scenario.lines.push_back(std::move(line));
}

void readLine(Scenario& scenario, Settings& settings, const std::string& text) {
  const std::string line = evenedLine(text);
  if (isRemark(line)) {
    scenario.remarks.push_back(text);
  } else if (isPeriod(line)) {
    readPeriod(scenario, line);
  } else if (!isFigure(line)) {
    const auto colon = line.find(':');
    if (colon == std::string::npos) throw std::runtime_error("neither a setting nor a day");
    settings[line.substr(0, colon)] = evenedLine(line.substr(colon + 1));
    std::ranges::move(scenario.remarks, std::back_inserter(scenario.head));
    scenario.remarks.clear();
    scenario.head.push_back(text);
  }
}

}  // namespace

Scenario Scenario::read(const std::string& text) {
  Scenario scenario;
  Settings settings;
  std::istringstream stream(text);
  std::string line;
  for (int number = 1; std::getline(stream, line); ++number) {
    try {
      readLine(scenario, settings, line);
    } catch (const std::exception& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  auto& beforeDays = scenario.lines.empty() ? scenario.remarks : scenario.lines.front().remarks;
  beforeDays.erase(beforeDays.begin(), std::ranges::find_if(beforeDays, std::not_fn(&std::string::empty)));
  while (!scenario.remarks.empty() && scenario.remarks.back().empty()) scenario.remarks.pop_back();
  std::ranges::stable_sort(scenario.log, {}, &LoggedEntry::entryDate);
  applySettings(scenario, settings);
  return scenario;
}

std::string evened(const std::string& text) {
  std::istringstream stream(text);
  std::string result;
  std::string line;
  while (std::getline(stream, line))
    if (const std::string words = scenario_words::evenedLine(line); !words.empty()) result += words + "\n";
  return result;
}

}  // namespace habitra
