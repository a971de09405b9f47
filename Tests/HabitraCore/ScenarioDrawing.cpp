#include "Scenario.h"
#include "ScenarioWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <set>
#include <stdexcept>

namespace habitra {

namespace {

using namespace scenario_words;

/// A line of the drawing: one period, or equal days in a row.
struct Row {
  std::int32_t from = 0;
  std::int32_t to = 0;
  TaskFrequencyPeriodType type{};
  const Scenario::Line* readAs = nullptr;  ///< none where the file does not mention the days
  std::string mark;
  std::string entries;
  std::string status;
  std::optional<qz::YYYYMMDD> countedFrom;  ///< where the count in the last column begins
  std::string firstCount;
  std::string lastCount;
  StreakStatus firstStreak;
  StreakStatus lastStreak;
};

qz::YYYYMMDD dayOf(std::int32_t integer) { return qz::YYYYMMDD::fromRawValue(integer).value(); }

std::string joined(const std::string& first, const std::string& second, const std::string& between) {
  return first == second ? first : first + between + second;
}

std::string entryText(const LoggedEntry& entry, TaskFrequencyPeriodType type) {
  const std::string word = textOf(entry);
  const std::string date = dayOf(entry.entryDate).debugDescription();
  switch (type) {
    case TaskFrequencyPeriodType::day: return word;
    case TaskFrequencyPeriodType::year: return date.substr(5) + ":" + word;
    default: return date.substr(8) + ":" + word;
  }
}

}  // namespace

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
  using SkipMode = TaskFrequency::SkipMode;
  const auto mode = walked.isOpen ? walked.status.skipMode() : std::nullopt;
  if (mode == SkipMode::willMissWithIndicator || mode == SkipMode::willSkipWithIndicator) text += "*";
  const TaskProgressCodable progress = walked.completionStatus().codableProgress;
  if (progress.type() == TaskProgressType::simple) return text;
  if (const auto* const parts = std::get_if<TaskProgressDiscrete>(&progress.base))
    return text + " " + std::to_string(parts->numCompletions) + "/" + std::to_string(parts->expectedCompletions);
  return text + " " + std::to_string(displayedPercentage(progress.progressShare())) + "%";
}

namespace {

std::string countText(const PeriodReason& reason) {
  if (reason.required) {
    const std::int64_t reachable = *reason.completed + *reason.stillPossible;
    return std::to_string(*reason.completed) + "+" + std::to_string(*reason.stillPossible) +
           (reachable >= *reason.required ? " >= " : " < ") + std::to_string(*reason.required);
  }
  if (reason.allowance) return std::to_string(*reason.allowanceLeft) + "/" + std::to_string(*reason.allowance);
  if (reason.countedFrom) return reason.countedFrom->debugDescription() + " +" + std::to_string(*reason.daysSince);
  return "";
}

std::string streakText(const StreakStatus& streak) {
  return std::to_string(streak.current) + "/" + std::to_string(streak.best);
}

std::string shareText(const TaskRecentHistory::PreviousDaysSuccess& success) {
  constexpr std::array<const char*, 5> spans{"7 days", "30 days", "past month", "past year", "all time"};
  return std::string(spans[static_cast<std::size_t>(success.type)]) + " " +
         std::to_string(std::llround(success.successPct * static_cast<double>(success.numSamples))) + " of " +
         std::to_string(success.numSamples);
}

std::string dayText(const std::optional<qz::YYYYMMDD>& date) { return date ? date->debugDescription() : "never"; }

std::string entriesText(const WalkedPeriod& walked) {
  std::string text;
  for (const LoggedEntry& entry : walked.entries) text += entryText(entry, walked.periodType) + " ";
  if (walked.fillIn) return text + "[" + std::string(nameOf(*walked.fillIn)) + "]";
  return text.substr(0, text.empty() ? 0 : text.size() - 1);
}

Row rowOf(const WalkedPeriod& walked, const Scenario::Line* readAs) {
  const PeriodReason reason = walked.reason();
  const std::string counted = countText(reason);
  const std::string count = counted + (walked.missIsAllowed ? counted.empty() ? "room" : " room" : "");
  return {.from = walked.from,
          .to = walked.to,
          .type = walked.periodType,
          .readAs = readAs,
          .mark = walked.isDue      ? " due"
                  : walked.isPaused ? " paused"
                                    : "",
          .entries = entriesText(walked),
          .status = statusText(walked),
          .countedFrom = reason.countingPeriod ? reason.countingPeriod->startDate : reason.countedFrom,
          .firstCount = count,
          .lastCount = count,
          .firstStreak = walked.streak,
          .lastStreak = walked.streak};
}

/// Whether `day`, the one after `row`, can be drawn in its line: all equal, the streak at rest or growing all along.
bool goesOn(const Row& row, const Row& day) {
  const auto isDay = [](const Row& one) { return one.type == TaskFrequencyPeriodType::day; };
  if (!isDay(row) || !isDay(day) || row.readAs != day.readAs) return false;
  if (row.mark != day.mark || row.entries != day.entries || row.status != day.status) return false;
  if (row.countedFrom != day.countedFrom) return false;
  const std::int64_t days = dayOf(row.from).distance(dayOf(day.from));
  const std::int64_t growth = day.lastStreak.current - row.firstStreak.current;
  const std::int64_t before = row.lastStreak.current - row.firstStreak.current;
  return growth == 0 || (growth == days && before == days - 1);
}

/// "2024-01-01 Mon", "2024-01-01..2024-01-03 Mon..Wed" or "2024-01-01..2024-01-07 week".
std::string spanText(const Row& row) {
  const qz::YYYYMMDD from = dayOf(row.from);
  const qz::YYYYMMDD to = dayOf(row.to);
  const std::string days = joined(from.debugDescription(), to.debugDescription(), "..");
  if (row.type != TaskFrequencyPeriodType::day) return days + " " + std::string(caseName(row.type));
  const std::string weekday(nameOf(from.dayOfWeek()));
  return days + " " + (from == to ? weekday : weekday + ".." + std::string(nameOf(to.dayOfWeek())));
}

std::vector<std::string> columnsOf(const Row& row) {
  const bool isEach = row.type == TaskFrequencyPeriodType::day && row.from != row.to && !row.entries.empty();
  return {spanText(row) + row.mark, row.entries + (isEach ? " each" : ""), row.status,
          joined(streakText(row.firstStreak), streakText(row.lastStreak), ".."),
          joined(row.firstCount, row.lastCount, " .. ")};
}

class Drawing {
 public:
  explicit Drawing(const Scenario& scenario) : scenario_(scenario) {
    const HistoryWalk walk(scenario.rules, scenario.scope);
    figures_ = walk.walk(scenario.log, [this](const WalkedPeriod& walked) { take(walked); }).figures;
    // Unwatched, the walk may take shorter ways.
    if (walk.walk(scenario.log).figures != figures_) throw std::runtime_error("the figures depend on being watched");
    takeUnvisited();
  }

  std::string text() {
    write(scenario_.head);
    text_ += "\n";
    writeRows();
    write(scenario_.remarks);
    text_ += "\n";
    text_ += "last: completed " + dayText(figures_.lastCompleted) + ", missed " + dayText(figures_.lastMissed) +
             ", skipped " + dayText(figures_.lastSkipped) + "\n";
    text_ += "shares: " + shareText(figures_.shortTerm) + ", " + shareText(figures_.longTerm) + "\n";
    return text_;
  }

 private:
  void take(const WalkedPeriod& walked) {
    for (const LoggedEntry& entry : walked.entries) visited_.insert(entry.order);
    const auto line = std::ranges::find_if(
        scenario_.lines, [&](const Scenario::Line& one) { return one.from <= walked.from && walked.from <= one.to; });
    const Row row = rowOf(walked, line == scenario_.lines.end() ? nullptr : &*line);
    if (rows_.empty() || !goesOn(rows_.back(), row)) {
      rows_.push_back(row);
    } else {
      rows_.back().to = row.to;
      rows_.back().lastCount = row.lastCount;
      rows_.back().lastStreak = row.lastStreak;
    }
  }

  /// Entries that counted for no period are drawn as well, so that none is lost from the file.
  void takeUnvisited() {
    for (const LoggedEntry& entry : scenario_.log) {
      if (visited_.contains(entry.order)) continue;
      rows_.push_back({.from = entry.periodFrom,
                       .to = entry.periodTo,
                       .type = entry.periodType,
                       .entries = entryText(entry, entry.periodType),
                       .status = "no period"});
    }
  }

  void write(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) text_ += line + "\n";
  }

  void writeRows() {
    std::vector<std::vector<std::string>> table;
    for (const Row& row : rows_) table.push_back(columnsOf(row));
    const std::vector<std::string> lines = linesOf(table);
    auto line = scenario_.lines.begin();
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      for (; line != scenario_.lines.end() && line->from <= rows_[row].to; ++line) write(line->remarks);
      text_ += lines[row] + "\n";
    }
    for (; line != scenario_.lines.end(); ++line) write(line->remarks);
  }

  const Scenario& scenario_;
  TaskFigures figures_;
  std::set<std::int64_t> visited_;
  std::vector<Row> rows_;
  std::string text_;
};

}  // namespace

std::string Scenario::drawn() const { return Drawing(*this).text(); }

}  // namespace habitra
