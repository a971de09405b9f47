#include "ScenarioWords.h"

#include <HabitraCore/HistoryWalk.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace habitra::scenario_words {

namespace {

using T = TaskLogEntryType;
using Mode = TaskFrequency::DayMode;

constexpr std::array<std::pair<std::string_view, T>, 16> entryWords{{
    {"undo", T::unknown},
    {"done", T::completedManuallyFull},
    {"done-auto", T::completedAutomaticallyFull},
    {"part", T::completedManuallyPartial},
    {"part-auto", T::completedAutomaticallyPartial},
    {"skip", T::skippedManuallyFull},
    {"skip-auto", T::skippedAutomaticallyFull},
    {"allowed", T::allowableMissManuallyFull},
    {"allowed-auto", T::allowableMissAutomaticallyFull},
    {"miss", T::missedManuallyFull},
    {"miss-auto", T::missedAutomaticallyFull},
    {"miss-part", T::missedManuallyPartial},
    {"miss-part-auto", T::missedAutomaticallyPartial},
    {"timer", T::timerManual},
    {"timer-auto", T::timerAutomatic},
    {"health", T::externalHealthData},
}};

constexpr std::array<std::string_view, 7> weekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

struct PeriodWord {
  std::string_view word;
  Mode counted;
  Mode aggregate;
};
constexpr std::array<PeriodWord, 4> periodWords{{
    {"week", Mode::numberOfDaysInWeek, Mode::aggregateOverWeek},
    {"fortnight", Mode::numberOfDaysInFortnight, Mode::aggregateOverFortnight},
    {"month", Mode::numberOfDaysInMonth, Mode::aggregateOverMonth},
    {"year", Mode::numberOfDaysInYear, Mode::aggregateOverYear},
}};

[[noreturn]] void fail(const std::string& what, const std::string& text) { throw std::runtime_error(what + text); }

const PeriodWord& periodWord(const std::string& text) {
  const auto row = std::ranges::find(periodWords, text, &PeriodWord::word);
  if (row == periodWords.end()) fail("not a period: ", text);
  return *row;
}

DaysOfMonth dayOfMonth(const std::string& text) {
  if (text == "last") return DaysOfMonth::lastDay();
  if (text.starts_with("last-")) return DaysOfMonth::lastDay(number(text.substr(5)));
  return DaysOfMonth::day(number(text));
}

TaskFrequency ruleOf(const std::vector<std::string>& words) {
  TaskFrequency frequency;
  if (words.size() == 2 && words[0] == "every" && words[1] == "day") return TaskFrequency::everyDay();
  if (words.size() == 3 && words[0] == "every" && words[2] == "days") {
    frequency.dayMode = Mode::dayInterval;
    frequency.dayInterval = number(words[1]);
  } else if (words.size() == 4 && words[0] == "total" && words[2] == "a") {
    frequency.dayMode = periodWord(words[3]).aggregate;
    frequency.numCompletions = number(words[1]);
  } else if (words.size() == 4 && words[1] == "days" && words[2] == "a") {
    frequency.dayMode = periodWord(words[3]).counted;
    frequency.numCompletions = number(words[0]);
  } else if (!words.empty() && words[0] == "days") {
    frequency.dayMode = Mode::specificDaysOfMonth;
    for (std::size_t i = 1; i < words.size(); ++i) frequency.daysOfMonth.insert(dayOfMonth(words[i]));
  } else {
    for (const std::string& word : words) frequency.days.insert(weekday(word));
  }
  return frequency;
}

bool isToAvoid(const std::string& text) {
  if (text != "to do" && text != "to avoid") fail("neither to do nor to avoid: ", text);
  return text == "to avoid";
}

double amount(const std::string& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) fail("not an amount: ", text);
  return value;
}

TaskMeasure measure(const std::string& text) {
  const std::vector<std::string> words = wordsOf(text);
  if (words.empty()) return {};
  if (text == "rings") return {.kind = TaskMeasure::Kind::rings};
  if (words.size() == 3 && words[0] == "timed" && words[2] == "minutes")
    return {.kind = TaskMeasure::Kind::timed, .target = 60 * amount(words[1])};
  if (words.size() == 2) return {.kind = TaskMeasure::Kind::quantity, .target = amount(words[0])};
  fail("not a measure: ", text);
}

}  // namespace

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::string evenedLine(const std::string& line) {
  std::string result;
  for (const std::string& word : wordsOf(line)) result += (result.empty() ? "" : " ") + word;
  return result;
}

std::int64_t number(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) fail("not a number: ", text);
  return value;
}

qz::YYYYMMDD day(const std::string& text) {
  int y = 0;
  int m = 0;
  int d = 0;
  int length = 0;
  const bool isRead = std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &y, &m, &d, &length) == 3 && length == 10;
  const qz::YYYYMMDD day(y, m, d);
  if (!isRead || text.size() != 10 || !day.exists()) fail("not a day: ", text);
  return day;
}

std::pair<qz::YYYYMMDD, qz::YYYYMMDD> span(const std::string& text) {
  const auto dots = text.find("..");
  const qz::YYYYMMDD from = day(text.substr(0, dots));
  const qz::YYYYMMDD to = dots == std::string::npos ? from : day(text.substr(dots + 2));
  if (to < from) fail("ends before it begins: ", text);
  return {from, to};
}

std::vector<TaskPause> pauses(const std::string& text) {
  std::vector<TaskPause> result;
  for (std::string word : wordsOf(text)) {
    if (word.ends_with(',')) word.pop_back();
    if (word.ends_with("..")) {
      result.push_back({.from = day(word.substr(0, 10)), .to = std::nullopt});
    } else {
      const auto [from, to] = span(word);
      result.push_back({.from = from, .to = to});
    }
  }
  return result;
}

qz::DayOfWeek weekday(const std::string& text) {
  for (std::size_t raw = 0; raw < weekdayNames.size(); ++raw) {
    const std::string_view name = weekdayNames[raw];
    if (text.size() >= 3 && std::tolower(name[0]) == text[0] && text.substr(1, 2) == name.substr(1, 2))
      return static_cast<qz::DayOfWeek::Case>(raw);
  }
  fail("not a weekday: ", text);
}

std::string_view nameOf(qz::DayOfWeek weekday) { return weekdayNames[static_cast<std::size_t>(weekday.rawValue())]; }

TaskLogEntryType entryType(const std::string& text) {
  for (const auto& [word, type] : entryWords)
    if (word == text) return type;
  fail("no entry is called ", text);
}

std::string_view nameOf(TaskLogEntryType type) {
  return std::ranges::find(entryWords, type, &std::pair<std::string_view, T>::second)->first;
}

LoggedEntry entry(const std::string& text) {
  const auto parenthesis = text.find('(');
  LoggedEntry entry{.entryType = entryType(text.substr(0, parenthesis))};
  if (parenthesis == std::string::npos) return entry;
  if (!text.ends_with(')')) fail("not an entry: ", text);
  entry.progress = entry.progressTotal = amount(text.substr(parenthesis + 1, text.size() - parenthesis - 2));
  return entry;
}

std::string textOf(const LoggedEntry& entry) {
  std::string text(nameOf(entry.entryType));
  if (entry.progressTotal == 0) return text;
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), entry.progressTotal).ptr;
  return text + "(" + std::string(digits.data(), end) + ")";
}

TaskFrequency frequency(const std::string& text, std::int64_t times) {
  TaskFrequency frequency = ruleOf(wordsOf(text));
  frequency.numPartialCompletions = times;
  if (!HistoryWalk::supports(frequency)) fail("no rule that can be: ", text);
  return frequency;
}

std::string take(Settings& settings, const std::string& name, const std::string& absent) {
  auto node = settings.extract(name);
  return node ? node.mapped() : absent;
}

TaskRules takeRules(Settings& settings) {
  TaskRules rules;
  rules.frequency = frequency(take(settings, "due"), number(take(settings, "times", "1")));
  rules.isNegative = isToAvoid(take(settings, "sign"));
  rules.firstDayOfWeek = weekday(take(settings, "weeks", "sunday"));
  rules.pauses = pauses(take(settings, "paused"));
  rules.measure = measure(take(settings, "measure"));
  if (settings.contains("reference")) rules.referenceDate = day(take(settings, "reference"));
  return rules;
}

void expectNoneLeft(const Settings& settings) {
  if (!settings.empty()) fail("no setting is called ", settings.begin()->first);
}

std::vector<std::string> linesOf(const std::vector<std::vector<std::string>>& table) {
  std::vector<std::size_t> widths;
  for (const auto& row : table) {
    widths.resize(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  if (!widths.empty() && widths.back() == 0) widths.pop_back();
  std::vector<std::string> lines;
  for (const auto& row : table) {
    std::string line;
    for (std::size_t i = 0; i < widths.size(); ++i)
      line += (i == 0 ? "" : " | ") + row[i] + std::string(widths[i] - row[i].size(), ' ');
    lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
  }
  return lines;
}

}  // namespace habitra::scenario_words
