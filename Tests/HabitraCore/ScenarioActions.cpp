#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/StoredFrequency.h>
#include <HabitraCore/TaskLogEntryChoice.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "Scenario.h"
#include "ScenarioWords.h"

namespace habitra {

namespace {

using namespace scenario_words;

qz::YYYYMMDD dayOf(std::int32_t integer) { return qz::YYYYMMDD::fromRawValue(integer).value(); }

/// "2:done": a day of January 2024 and what stands behind it; the first where none is named.
std::pair<std::int32_t, std::string> onDay(const std::string& word) {
  constexpr std::int32_t january = 20240100;
  const auto colon = word.find(':');
  if (colon == std::string::npos) return {january + 1, word};
  return {january + static_cast<std::int32_t>(number(word.substr(0, colon))), word.substr(colon + 1)};
}

/// The log of one task, as a person's taps and entries change it.
class TappedLog {
 public:
  TappedLog(const TaskRules& rules, const std::string& column) : rules_(rules) {
    for (const std::string& word : wordsOf(column)) {
      const auto [day, name] = onDay(word);
      add(entry(name), day);
    }
  }

  /// What the day shows when it is today; `streak` is the one before its period.
  struct Shown {
    CompletionStatus status;
    std::string text;
    StreakStatus before;
    StreakStatus streak;
    bool missIsAllowed = false;
  };
  [[nodiscard]] Shown shown(std::int32_t day) const {
    Shown shown;
    static_cast<void>(walkUntil(day).walk(log_, [&](const WalkedPeriod& walked) {
      shown = {walked.completionStatus(), statusText(walked), shown.streak, walked.streak, walked.missIsAllowed};
    }));
    return shown;
  }

  void write(TaskLogEntryType type, std::int32_t day) {
    const auto bounds = periodOf(day);
    std::erase_if(log_, [&](const LoggedEntry& old) {
      return periodOf(old.entryDate) == bounds && supersedes(type, old.entryType);
    });
    if (!isAutomatic(type)) takeBackAfter(day);
    add({.entryType = type}, day);
    for (const Retyping& retyping : walkUntil(log_.back().entryDate).retypings(log_, dayOf(day)))
      std::ranges::find(log_, retyping.order, &LoggedEntry::order)->entryType = retyping.entryType;
  }

  [[nodiscard]] std::string text(bool withDays) const {
    std::string text;
    for (const LoggedEntry& one : log_)
      text += (withDays ? std::to_string(one.entryDate % 100) + ":" : "") + textOf(one) + " ";
    return text.substr(0, text.empty() ? 0 : text.size() - 1);
  }

 private:
  [[nodiscard]] TaskFrequencyPeriod periodOf(std::int32_t day) const {
    return rules_.frequency.period(dayOf(day), rules_.firstDayOfWeek, rules_.referenceDate).period;
  }
  [[nodiscard]] HistoryWalk walkUntil(std::int32_t today) const {
    return {rules_, HistoryScope::of({2024, 1, 1}, {}, std::nullopt, dayOf(today))};
  }

  void add(LoggedEntry entry, std::int32_t day) {
    const TaskFrequencyPeriod period = periodOf(day);
    entry.order = ++order_;
    entry.entryDate = day;
    entry.periodFrom = static_cast<std::int32_t>(period.startDate.intValue());
    entry.periodTo = static_cast<std::int32_t>(period.finishDate.intValue());
    entry.periodType = period.periodType;
    log_.insert(std::ranges::upper_bound(log_, day, {}, &LoggedEntry::entryDate), entry);
  }

  void takeBackAfter(std::int32_t day) {
    const auto following = followingDays(rules_, dayOf(day));
    if (!following) return;
    bool goesOn = true;
    std::erase_if(log_, [&](const LoggedEntry& later) {
      if (later.entryDate <= day || (following->last && dayOf(later.entryDate) > *following->last)) return false;
      if (following->endAtCompletion && isCompletedFull(later.entryType)) goesOn = false;
      return goesOn && followsFromEarlierDays(later.entryType);
    });
  }

  const TaskRules& rules_;
  std::vector<LoggedEntry> log_;  ///< by day, then in order of creation
  std::int64_t order_ = 0;
};

/// A line of a file of actions: what stands, what is done and, to be computed, what stands then and what the day shows.
std::vector<std::string> acted(const TaskRules& rules, const std::string& stands, const std::string& action) {
  TappedLog log(rules, stands);
  const auto [day, word] = onDay(action);
  const TappedLog::Shown before = log.shown(day);
  const bool isTap = word.starts_with("tap");
  const bool isPartial = word == "tap-part";
  log.write(isTap ? nextEntryType(before.status, isPartial, before.missIsAllowed) : entryType(word), day);
  const TappedLog::Shown after = log.shown(day);
  if (isTap) {
    // A front end shows this at once, before anything is written.
    const auto next = before.status.next(before.before, isPartial, {.missIsAllowed = before.missIsAllowed});
    if (next.completionStatus.status.kind() != after.status.status.kind() || next.streak != after.streak ||
        next.completionStatus.codableProgress != after.status.codableProgress)
      throw std::runtime_error("the tap shows another status than the log: " + stands + " | " + action);
  }
  const bool withDays = action.find(':') != std::string::npos;
  return {stands, action, log.text(withDays), after.text};
}

/// A line of the table of stored forms; "<-" where the columns are never written so.
std::vector<std::string> kept(const std::string& rule, const std::string& direction, const std::string& columns) {
  std::istringstream stream(columns);
  StoredFrequency read;
  stream >> read.daysMode >> read.daysOfWeek >> read.daysPerWeek >> read.daysTimesPerDay >> read.daysOfMonth;
  const auto times = rule.find(" times ");
  std::optional<TaskFrequency> meant;
  if (rule != "none")
    meant = frequency(rule.substr(0, times), times == std::string::npos ? 1 : number(rule.substr(times + 7)));
  if (!stream || frequency(read) != meant) throw std::runtime_error("does not mean " + rule + ": " + columns);
  if (direction == "<-") return {rule, direction, columns};
  const StoredFrequency written = stored(meant.value());
  std::ostringstream text;
  text << written.daysMode << ' ' << written.daysOfWeek << ' ' << written.daysPerWeek << ' ' << written.daysTimesPerDay
       << ' ' << written.daysOfMonth;
  return {rule, direction, text.str()};
}

std::vector<std::string> columnsOf(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> columns;
  for (std::string column; std::getline(stream, column, '|');) columns.push_back(evenedLine(column));
  columns.resize(std::max<std::size_t>(columns.size(), 3));
  return columns;
}

bool isRow(const std::string& line) { return !line.starts_with('#') && line.find('|') != std::string::npos; }

}  // namespace

std::string drawn(const std::string& text) {
  if (text.find("\ntoday:") != std::string::npos) return Scenario::read(text).drawn();
  std::vector<std::string> lines;
  Settings settings;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
    const auto colon = line.find(':');
    if (line.empty() || line.starts_with('#') || isRow(line)) continue;
    if (colon == std::string::npos) throw std::runtime_error("neither a setting nor a row: " + line);
    settings[line.substr(0, colon)] = evenedLine(line.substr(colon + 1));
  }
  std::optional<TaskRules> rules;
  if (!settings.empty()) rules = takeRules(settings);
  expectNoneLeft(settings);
  std::vector<std::vector<std::string>> table;
  for (const std::string& line : lines) {
    if (!isRow(line)) continue;
    const std::vector<std::string> columns = columnsOf(line);
    table.push_back(rules ? acted(*rules, columns[0], columns[1]) : kept(columns[0], columns[1], columns[2]));
  }
  const std::vector<std::string> rows = linesOf(table);
  auto row = rows.begin();
  std::string result;
  for (const std::string& line : lines) result += (isRow(line) ? *row++ : line) + "\n";
  return result;
}

}  // namespace habitra
