#include <HabitraCLI/Answers.h>
#include <HabitraCLI/DisplayText.h>
#include <HabitraCLI/HabitTable.h>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <algorithm>
#include <initializer_list>
#include <span>
#include <utility>

namespace habitra {
namespace {

using Kind = CompletionStatus::Status::Kind;

constexpr std::string_view emptyStore =
    "No habits yet.\n"
    "Add your first one:   habitra add Read ten pages\n"
    "Or bring a history:   habitra import history.csv\n";

constexpr std::string_view weekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

/// "3 habits: 1 added, 2 changed", and a line feed; parts of which there are none are left out.
std::string withParts(std::string text, std::initializer_list<std::pair<std::size_t, std::string_view>> parts) {
  std::string_view separator = ": ";
  for (const auto& [count, what] : parts) {
    if (count == 0) continue;
    text += fmt::format("{}{} {}", separator, count, what);
    separator = ", ";
  }
  return text + "\n";
}

bool has(const HabitSummary& habit, Kind kind) { return habit.status && habit.status->status.kind() == kind; }

template <typename Holds>
std::size_t countIf(std::span<const HabitSummary* const> habits, const Holds& holds) {
  return static_cast<std::size_t>(
      std::count_if(habits.begin(), habits.end(), [&](const auto* h) { return holds(*h); }));
}

/// Adds the habits, under headings of their pages when there are more than one.
void addByPage(HabitTable& table, const std::vector<HabitSummary>& habits, bool withHeadings) {
  const HabitSummary* before = nullptr;
  for (const HabitSummary& habit : habits) {
    if (withHeadings && (before == nullptr || before->page != habit.page))
      table.addHeading(fmt::format("Page {}", habit.page));
    table.add(habit);
    before = &habit;
  }
}

bool haveSeveralPages(std::span<const HabitSummary> habits) {
  return std::any_of(habits.begin(), habits.end(), [&](const auto& h) { return h.page != habits.front().page; });
}

/// "[x] Read ten pages: "
std::string lead(const HabitSummary& habit, const Terminal& terminal) {
  const StatusMark mark = StatusMark::of(habit);
  return fmt::format("{} {}: ", terminal.paint(mark.colour, mark.mark), displayable(habit.title));
}

std::string streak(const HabitSummary& habit) {
  return fmt::format("streak {} (best {})", habit.streak.current, habit.streak.best);
}

/// "today", or "this week" for a habit that is measured by weeks.
std::string currentPeriod(const HabitSummary& habit) {
  const bool isDay = !habit.period || habit.period->periodType == TaskFrequencyPeriodType::day;
  return isDay ? "today" : fmt::format("this {}", caseName(habit.period->periodType));
}

std::string nowHolds(const HabitSummary& habit) {
  return has(habit, Kind::positiveIncomplete) ? "counted, still open" : std::string(StatusMark::of(habit).word);
}

/// "Wed 2024-01-31: 2 of 5 done, 1 skipped, 1 of 1 clean"
std::string dayLine(const TodayList& today) {
  std::vector<const HabitSummary*> toDo;
  std::vector<const HabitSummary*> toAvoid;
  for (const auto* group : {&today.open, &today.done, &today.others}) {
    for (const HabitSummary& habit : *group) {
      if (habit.due) (habit.isNegative ? toAvoid : toDo).push_back(&habit);
    }
  }
  const auto number = [](const auto& habits, Kind kind) {
    return countIf(habits, [&](const HabitSummary& habit) { return has(habit, kind); });
  };
  std::string text = fmt::format("{} {}: ", weekdays[today.day.dayOfWeek().rawValue()], today.day.debugDescription());
  text +=
      toDo.empty() ? "nothing to do" : fmt::format("{} of {} done", number(toDo, Kind::positiveComplete), toDo.size());
  if (const std::size_t skipped = number(toDo, Kind::positiveSkip); skipped > 0)
    text += fmt::format(", {} skipped", skipped);
  if (!toAvoid.empty())
    text += fmt::format(", {} of {} clean", number(toAvoid, Kind::negativeComplete), toAvoid.size());
  return text;
}

/// "2 notes: 1 added, 1 already there"; nothing where there are none.
std::string total(const ImportReport::Rows& rows, std::string_view singular) {
  const std::size_t ofDocument = rows.added + rows.changed + rows.left + rows.passedOver;
  if (ofDocument + rows.removed == 0) return {};
  const std::string plural = singular == "category" ? "categories" : fmt::format("{}s", singular);
  return withParts(counted(ofDocument, singular, plural), {{rows.added, "added"},
                                                           {rows.changed, "changed"},
                                                           {rows.left, "already there"},
                                                           {rows.passedOver, "passed over"},
                                                           {rows.removed, "removed"}});
}

/// "3 notes", and "2 notes removed"; nothing where there are none.
void addChanges(std::vector<std::string>& all, const ImportReport::Rows& rows, std::string_view singular) {
  if (const std::size_t cameOver = rows.added + rows.changed; cameOver > 0) all.push_back(counted(cameOver, singular));
  if (rows.removed > 0) all.push_back(counted(rows.removed, singular) + " removed");
}

/// "Walk: 12 entries, 3 notes; 1 entry lies after today and was left out" for a habit of which there is more to say
/// than how many entries it has, otherwise nothing.
std::string habitLine(const ImportReport::Task& task) {
  if (!task.notes.haveChanged() && !task.parts.haveChanged() && task.remarks.empty()) return {};
  std::vector<std::string> changes;
  if (const std::size_t cameOver = task.entries.added + task.entries.changed; cameOver > 0)
    changes.push_back(counted(cameOver, "entry", "entries"));
  addChanges(changes, task.notes, "note");
  addChanges(changes, task.parts, "other part");
  std::vector<std::string> said;
  if (!changes.empty()) said.push_back(fmt::format("{}", fmt::join(changes, ", ")));
  for (const std::string& remark : task.remarks) said.push_back(displayable(remark));
  return fmt::format("{}: {}\n", displayable(task.title), fmt::join(said, "; "));
}

}  // namespace

TodayList TodayList::of(qz::YYYYMMDD day, std::vector<HabitSummary> habits) {
  TodayList today{.day = day, .open = {}, .done = {}, .others = {}};
  for (HabitSummary& habit : habits) {
    const bool isClean = habit.due && has(habit, Kind::negativeComplete);
    if (habit.due && has(habit, Kind::positiveIncomplete))
      today.open.push_back(std::move(habit));
    else if (isClean || has(habit, Kind::positiveComplete))
      today.done.push_back(std::move(habit));
    else
      today.others.push_back(std::move(habit));
  }
  return today;
}

std::string asText(const HabitList& answer, const Terminal& terminal) {
  if (answer.habits.empty()) return std::string(emptyStore);
  HabitTable table(HabitTable::LastCompleted::shown);
  addByPage(table, answer.habits, haveSeveralPages(answer.habits));
  return table.text(terminal);
}

std::string asText(const TodayList& answer, const Terminal& terminal) {
  if (answer.open.empty() && answer.done.empty() && answer.others.empty()) return std::string(emptyStore);
  HabitTable table(HabitTable::LastCompleted::hidden);
  table.addHeading(dayLine(answer));
  const bool severalPages = haveSeveralPages(answer.open);
  if (!answer.open.empty() && !severalPages) table.addEmptyLine();
  addByPage(table, answer.open, severalPages);
  for (const auto* group : {&answer.done, &answer.others}) {
    if (!group->empty()) table.addEmptyLine();
    addByPage(table, *group, false);
  }
  return table.text(terminal);
}

std::string asText(const AddedHabit& answer, const Terminal& terminal) {
  return lead(answer.habit, terminal) + "added\n";
}

std::string asText(const MarkedHabits& answer, const Terminal& terminal) {
  std::string text;
  for (const Marked& marked : answer.habits) {
    HabitSummary habit = marked.habit;
    std::string onDay;
    if (marked.pastDay) {
      habit.status = marked.pastDay->status;
      onDay = fmt::format(" on {}", marked.pastDay->day.debugDescription());
    }
    text += lead(habit, terminal);
    if (marked.outcome == Marked::Outcome::recorded)
      text += nowHolds(habit) + onDay;
    else
      text += fmt::format("was already {}{}", StatusMark::of(habit).word,
                          marked.pastDay ? onDay : " " + currentPeriod(habit));
    text += fmt::format(", {}\n", streak(habit));
  }
  return text;
}

std::string asText(const UndoneHabit& answer, const Terminal& terminal) {
  const std::string what = answer.day ? fmt::format("taken back for {}", answer.day->debugDescription())
                                      : fmt::format("{} again", StatusMark::of(answer.habit).word);
  return fmt::format("{}{}, {}\n", lead(answer.habit, terminal), what, streak(answer.habit));
}

std::string asText(const ProcessReport& answer, const Terminal&) {
  return withParts(
      counted(answer.tasks, "habit") + " up to date",
      {{answer.changed, "changed"},
       {answer.filledIn, answer.filledIn == 1 ? "day filled in" : "days filled in"},
       {answer.removed, answer.removed == 1 ? "entry of the future removed" : "entries of the future removed"}});
}

std::string asText(const ImportedHistory& answer, const Terminal&) {
  const ImportReport& report = answer.outcome.report;
  const ImportReport::Entries entries = report.entries();
  std::string text =
      withParts(counted(report.tasks.size(), "habit"), {{report.count(ImportReport::Outcome::added), "added"},
                                                        {report.count(ImportReport::Outcome::changed), "changed"},
                                                        {report.count(ImportReport::Outcome::left), "already there"},
                                                        {report.count(ImportReport::Outcome::leftOut), "left out"}});
  text += withParts(counted(entries.added + entries.changed + entries.left + entries.passedOver, "entry", "entries"),
                    {{entries.added, "added"},
                     {entries.changed, "changed"},
                     {entries.left, "already there"},
                     {entries.passedOver, "passed over"},
                     {entries.removed, "removed"}});
  text += total(report.notes(), "note") + total(report.parts(), "other part") + total(report.categories, "category") +
          total(report.pages, "page") + total(report.settings, "setting");
  for (const ImportReport::Task& task : report.tasks) text += habitLine(task);
  for (const std::string& remark : report.remarks) text += displayable(remark) + "\n";
  const auto& processed = answer.outcome.processed;
  if (!processed) return text + std::string(broughtUpToDateLater);
  if (processed->filledIn > 0) text += counted(processed->filledIn, "day") + " filled in\n";
  return text;
}

std::string asText(const ImportedSamples& answer, const Terminal&) {
  const auto& [added, left] = answer.outcome;
  return withParts(counted(added + left, "sample"), {{added, "added"}, {left, "already there"}});
}

std::string asText(const ExportedHistory& answer, const Terminal&) {
  const std::string written = answer.format == HabitraBackupFormat::csv
                                  ? counted(answer.outcome.rows, "row") + " of"
                                  : counted(answer.outcome.rows, "entry", "entries") + " and all else of";
  return fmt::format("{}: {} {} written\n", displayable(answer.file), written, counted(answer.outcome.tasks, "habit"));
}

}  // namespace habitra
