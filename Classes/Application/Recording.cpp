#include <HabitraApp/Rooms.h>

#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskTitle.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>
#include <algorithm>
#include <utility>

namespace habitra {
namespace {

constexpr std::size_t longestTitle = 500;

/// Blanks around a title are the shell's or the thumb's, not the person's.
std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

void checkTitle(const std::string& title) {
  if (title.empty()) throw qz::Error("a habit needs a title");
  if (title.size() > longestTitle)
    throw qz::Error(fmt::format("a title has at most {} bytes, this one {}", longestTitle, title.size()));
  if (qz::utf8::firstInvalidByte(title)) throw qz::Error("the title is not UTF-8 text");
  if (std::any_of(title.begin(), title.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
    throw qz::Error("a title is one line without control characters");
}

/// The day of a habit that a person speaks of, and what is recorded for it.
struct ChosenDay {
  qz::YYYYMMDD day;
  bool isToday;
  DatedPeriod period;  ///< the one that holds it
  qz::Moment start;    ///< of the entry
  qz::Moment end;
};

/// A clock that has fallen back by years would put today's entry there, and every day since would count as missed.
/// Whoever flew west may be a day before the one that the habit was made on.
void checkToday(const TaskEntity& task, const TaskCalendar& calendar, qz::YYYYMMDD today) {
  const auto created = calendar.creationDay(task);
  if (!created || today >= created->previousDay()) return;
  throw qz::Error(fmt::format("the clock says {}, but '{}' was made on {}: set the clock, or say which day is meant",
                              today.debugDescription(), shownTitle(task), created->debugDescription()));
}

/// Throws qz::Error for a day that lies in the future, and for a today that cannot be.
ChosenDay chosenDay(const TaskEntity& task, const TaskCalendar& calendar, qz::Moment now,
                    std::optional<qz::YYYYMMDD> day) {
  const qz::YYYYMMDD today = calendar.day(now);
  if (!day) checkToday(task, calendar, today);
  const qz::YYYYMMDD chosen = day.value_or(today);
  if (chosen > today)
    throw qz::Error(fmt::format("{} has not come yet for '{}'", chosen.debugDescription(), shownTitle(task)));
  const DatedPeriod period = periodHolding(task, chosen);
  if (chosen == today) return {chosen, true, period, now, now};
  // When on that day it was nobody knows; at noon it belongs to no other, whatever zone it is looked at from.
  const qz::Moment noon = chosen.dateAt(calendar.startOfDay, 12, 0, 0, calendar.timeZone);
  return {chosen, false, period, calendar.beginning(chosen), noon};
}

std::vector<TaskLogEntryEntity> logOf(StoreContext& context, const TaskEntity& task, const DatedPeriod& period) {
  return context.fetchLogEntries(task.objectID, storedDay(period.period.startDate),
                                 storedDay(period.period.finishDate));
}

/// The type of the newest row that says anything of its period.
std::optional<TaskLogEntryType> newestType(const std::vector<TaskLogEntryEntity>& rows) {
  std::optional<TaskLogEntryType> newest;
  ObjectID newestRow = ObjectID::none;
  for (const TaskLogEntryEntity& row : rows) {
    const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
    if (!type || !marksHistory(*type) || row.objectID < newestRow) continue;
    newest = type;
    newestRow = row.objectID;
  }
  return newest;
}

/// Whether one more entry of this type would change nothing for the period of `rows`, which has come to `status`.
bool isMarked(const std::optional<CompletionStatus>& status, const std::vector<TaskLogEntryEntity>& rows,
              TaskLogEntryType type) {
  if (!status) return false;
  const CompletionStatus::Status::Kind kind = status->status.kind();
  using Kind = CompletionStatus::Status::Kind;
  if (!status->isNegative()) return kind == (isSkipped(type) ? Kind::positiveSkip : Kind::positiveComplete);
  // A habit to avoid is clean without any entry, and remains so when it is skipped: only an entry tells.
  const auto newest = newestType(rows);
  return kind == Kind::negativeComplete && newest && (isSkipped(type) ? isSkipped(*newest) : isCompletedFull(*newest));
}

/// Whether an undo takes this row back: anything but what filling in would write again.
bool canBeTakenBack(const TaskLogEntryEntity& row) {
  const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
  if (!type || !marksHistory(*type)) return false;
  return isCompletedFullOrPartial(*type) || !isAutomatic(*type);
}

std::string commandText(std::string_view verb, const std::vector<TaskEntity*>& tasks) {
  std::string text(verb);
  for (const TaskEntity* task : tasks) text += fmt::format(" '{}'", shownTitle(*task));
  return text;
}

}  // namespace

HabitSummary Application::add(std::string_view title, std::int64_t streak) {
  std::string text = trimmed(title);
  checkTitle(text);
  const auto context = rooms_->contextToWrite();
  const auto tasks = TaskProcessor::activeTasks(*context);
  if (std::any_of(tasks.begin(), tasks.end(), [&](const TaskEntity* task) { return shownTitle(*task) == text; }))
    throw qz::Error(fmt::format("there is a habit called '{}' already", text));

  const qz::Moment now = rooms_->now();
  const Settings settings = rooms_->settings(context.get());
  TaskEntity values = newlyMadeTask(std::move(text), settings.get(settings::firstDayOfWeek), now,
                                    rooms_->calendars.ofDevice().timeZone.identifier());
  setFrequency(values, settings.get(settings::defaultFrequency));
  values.uniqueId = rooms_->manager.generateUniqueTaskId(*context, qz::UniqueID::generate(now)).text();
  values.displayOrder = StoredPages(*context).nextDisplayOrder(TaskPageNumber::first());
  rooms_->waitFor([&](const TaskProcessor::ChangeCompletion& completion) {
    rooms_->processor.createTasksPopulateInitialStreak(*context, {{.values = values, .initialStreak = streak}},
                                                       completion);
  });
  return rooms_->summarize(*context, *context->find<TaskEntity>("uniqueId", *values.uniqueId));
}

std::vector<Marked> Application::mark(std::string_view verb, TaskLogEntryType type,
                                      const std::vector<std::string>& names, std::optional<qz::YYYYMMDD> day) {
  if (names.empty()) return {};
  const auto context = rooms_->contextToChange(names.front());
  std::vector<TaskEntity*> tasks;
  for (const std::string& name : names) {
    TaskEntity& task = rooms_->lookUp(*context, name);
    if (std::find(tasks.begin(), tasks.end(), &task) == tasks.end()) tasks.push_back(&task);
  }
  std::vector<Marked> marked;
  for (TaskEntity* task : tasks) marked.push_back(markOne(*context, *task, type, day));
  rooms_->saveRecorded(*context, commandText(verb, tasks));
  return marked;
}

Marked Application::markOne(StoreContext& context, TaskEntity& task, TaskLogEntryType type,
                            std::optional<qz::YYYYMMDD> day) {
  const qz::Moment now = rooms_->now();
  const ChosenDay chosen = chosenDay(task, rooms_->calendars.of(task), now, day);
  const auto status = [&] { return rooms_->statusOf(context, task, chosen.period.period); };
  Marked::Outcome outcome = Marked::Outcome::already;
  rooms_->processor.process(context, task, now);
  if (!isMarked(status(), logOf(context, task, chosen.period), type)) {
    rooms_->record(context, task, type, chosen.period, chosen.start, chosen.end);
    rooms_->processor.process(context, task, now);
    outcome = Marked::Outcome::recorded;
  }
  Marked marked{.outcome = outcome, .habit = rooms_->summarize(context, task)};
  if (!chosen.isToday) marked.pastDay = {.day = chosen.day, .status = status()};
  return marked;
}

std::vector<Marked> Application::done(const std::vector<std::string>& names, std::optional<qz::YYYYMMDD> day) {
  return mark("done", TaskLogEntryType::completedManuallyFull, names, day);
}

std::vector<Marked> Application::skip(const std::vector<std::string>& names, std::optional<qz::YYYYMMDD> day) {
  return mark("skip", TaskLogEntryType::skippedManuallyFull, names, day);
}

HabitSummary Application::undo(std::string_view name, std::optional<qz::YYYYMMDD> day) {
  const auto context = rooms_->contextToChange(name);
  TaskEntity& task = rooms_->lookUp(*context, name);
  const qz::Moment now = rooms_->now();
  const ChosenDay chosen = chosenDay(task, rooms_->calendars.of(task), now, day);
  const auto rows = logOf(*context, task, chosen.period);
  if (std::none_of(rows.begin(), rows.end(), canBeTakenBack))
    throw qz::Error(
        fmt::format("nothing to undo: '{}' has no entry on {}", shownTitle(task), chosen.day.debugDescription()));

  rooms_->processor.process(*context, task, now);
  rooms_->record(*context, task, TaskLogEntryType::unknown, chosen.period, chosen.start, chosen.end);
  rooms_->processor.process(*context, task, now);
  rooms_->saveRecorded(*context, commandText("undo", {&task}));
  return rooms_->summarize(*context, task);
}

}  // namespace habitra
