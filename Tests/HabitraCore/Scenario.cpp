#include "Scenario.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace habitra {

namespace {

using T = TaskLogEntryType;

constexpr std::array<std::pair<std::string_view, T>, 16> entryWords{{
    {"undo", T::unknown},
    {"done", T::completedManuallyFull},
    {"done-auto", T::completedAutomaticallyFull},
    {"part", T::completedManuallyPartial},
    {"skip", T::skippedManuallyFull},
    {"skip-auto", T::skippedAutomaticallyFull},
    {"allowed", T::allowableMissManuallyFull},
    {"allowed-auto", T::allowableMissAutomaticallyFull},
    {"miss-auto", T::missedAutomaticallyFull},
    {"miss", T::missedManuallyFull},
    {"miss-part", T::missedManuallyPartial},
    {"miss-part-auto", T::missedAutomaticallyPartial},
    {"part-auto", T::completedAutomaticallyPartial},
    {"timer", T::timerManual},
    {"timer-auto", T::timerAutomatic},
    {"health", T::externalHealthData},
}};

constexpr std::array<std::string_view, 7> weekdayWords{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

T entryType(std::string_view word) {
  for (const auto& [text, type] : entryWords)
    if (text == word) return type;
  throw std::runtime_error("no entry is called " + std::string(word));
}

std::string_view wordOf(T type) {
  for (const auto& [text, known] : entryWords)
    if (known == type) return text;
  return "?";
}

qz::YYYYMMDD day(const std::string& text) {
  int y = 0;
  int m = 0;
  int d = 0;
  if (std::sscanf(text.c_str(), "%d-%d-%d", &y, &m, &d) != 3) throw std::runtime_error("not a day: " + text);
  return qz::YYYYMMDD(y, m, d);
}

TaskFrequency dueDays(std::istringstream words) {
  TaskFrequency frequency;
  std::string word;
  while (words >> word) {
    if (word == "days") {
      frequency.dayMode = TaskFrequency::DayMode::specificDaysOfMonth;
    } else if (word.starts_with("last")) {
      frequency.daysOfMonth.insert(DaysOfMonth::lastDay(word == "last" ? 0 : std::stoll(word.substr(5))));
    } else if (frequency.dayMode == TaskFrequency::DayMode::specificDaysOfMonth) {
      frequency.daysOfMonth.insert(DaysOfMonth::day(std::stoll(word)));
    } else {
      word[0] = static_cast<char>(word[0] - 'a' + 'A');
      for (std::size_t raw = 0; raw < 7; ++raw)
        if (weekdayWords[raw] == word) frequency.days.insert(static_cast<qz::DayOfWeek::Case>(raw));
    }
  }
  return frequency;
}

void readDay(Scenario& scenario, const std::string& line) {
  const auto bar = line.find('|');
  if (bar == std::string::npos) throw std::runtime_error("a day without columns: " + line);
  const auto date = static_cast<std::int32_t>(day(line).intValue());
  std::istringstream entries(line.substr(bar + 1, line.find('|', bar + 1) - bar - 1));
  std::string word;
  while (entries >> word) {
    if (word.starts_with('[')) continue;
    scenario.log.push_back({.order = static_cast<std::int64_t>(scenario.log.size()),
                            .entryDate = date,
                            .periodFrom = date,
                            .periodTo = date,
                            .entryType = entryType(word)});
  }
}

std::string statusText(const WalkedPeriod& walked) {
  using Kind = CompletionStatus::Status::Kind;
  std::string text;
  switch (walked.status.kind()) {
    case Kind::positiveIncomplete:
      text = !walked.isOpen ? "undecided" : walked.isDue ? "will miss" : "will skip";
      break;
    case Kind::negativeComplete: text = walked.isOpen ? "clean so far" : "clean"; break;
    case Kind::positiveComplete: text = "complete"; break;
    case Kind::positiveMiss:
    case Kind::negativeMiss: text = "miss"; break;
    case Kind::positiveSkip: text = "skip"; break;
    case Kind::negativeAllowedMiss: text = "allowed miss"; break;
  }
  if (walked.expectedUnits == 1) return text;
  return text + " " + std::to_string(walked.numUnits) + "/" + std::to_string(walked.expectedUnits);
}

std::string lineOf(const WalkedPeriod& walked, const std::string& entries) {
  const qz::YYYYMMDD date = walked.period().startDate;
  std::ostringstream line;
  line << date.debugDescription() << ' ' << weekdayWords[static_cast<std::size_t>(date.dayOfWeek().rawValue())]
       << std::left << std::setw(5) << (walked.isDue ? " due" : "") << "| " << std::setw(32)
       << entries + (walked.fillIn ? "[" + std::string(wordOf(*walked.fillIn)) + "]" : "") << "| " << std::setw(17)
       << statusText(walked) << "| " << walked.streak.current << '/' << walked.streak.best;
  return line.str();
}

std::string dayText(const std::optional<qz::YYYYMMDD>& date) { return date ? date->debugDescription() : "never"; }

std::string shareText(const TaskRecentHistory::PreviousDaysSuccess& success) {
  return std::to_string(std::llround(success.successPct * static_cast<double>(success.numSamples))) + " of " +
         std::to_string(success.numSamples);
}

}  // namespace

std::string evened(const std::string& line) {
  std::istringstream words(line);
  std::string result;
  std::string word;
  while (words >> word) result += (result.empty() ? "" : " ") + word;
  return result;
}

Scenario Scenario::read(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::map<std::string, std::string> settings;
  Scenario scenario;
  std::string line;
  while (std::getline(stream, line)) {
    const std::string text = evened(line);
    if (text.empty() || text[0] == '#') continue;
    const bool isDay = text[0] >= '0' && text[0] <= '9';
    if (isDay) readDay(scenario, text);
    if (isDay || text.starts_with("last:") || text.starts_with("shares:")) {
      scenario.expected.push_back(text);
    } else {
      settings[text.substr(0, text.find(':'))] = text.substr(std::min(text.size(), text.find(':') + 2));
    }
  }
  scenario.rules.frequency = dueDays(std::istringstream(settings.at("due")));
  if (settings.contains("times")) scenario.rules.frequency.numPartialCompletions = std::stoll(settings["times"]);
  scenario.rules.isNegative = settings.at("sign") == "to avoid";
  scenario.scope.created = day(settings.at("created"));
  scenario.scope.today = day(settings.at("today"));
  scenario.scope.fillFrom = settings.contains("filled") ? day(settings["filled"]) : scenario.scope.created;
  return scenario;
}

std::vector<std::string> Scenario::computed() const {
  std::map<std::int32_t, std::string> entries;
  for (const LoggedEntry& entry : log) entries[entry.entryDate] += std::string(wordOf(entry.entryType)) + " ";
  std::vector<std::string> lines;
  const HistoryResult result = HistoryWalk(rules, scope).walk(log, [&](const WalkedPeriod& walked) {
    lines.push_back(lineOf(walked, entries[walked.from]));
    entries.erase(walked.from);
  });
  for (const auto& [date, ignored] : entries)
    lines.push_back(dayText(qz::YYYYMMDD::fromRawValue(date)) + " | " + ignored + "|");
  const TaskFigures& figures = result.figures;
  lines.push_back("last: completed " + dayText(figures.lastCompleted) + ", missed " + dayText(figures.lastMissed) +
                  ", skipped " + dayText(figures.lastSkipped));
  lines.push_back("shares: 7 days " + shareText(figures.shortTerm) + ", 30 days " + shareText(figures.longTerm));
  return lines;
}

}  // namespace habitra
