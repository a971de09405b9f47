#include <HabitraApp/Rooms.h>

#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>
#include <algorithm>
#include <functional>
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

/// What the log of a period must hold for a mark to change nothing.
bool isMarked(const HabitSummary& habit, TaskLogEntryType type) {
  if (!habit.status) return false;
  const auto& status = habit.status->status;
  return isSkipped(type) ? status == CompletionStatus::Status::positiveSkip()
                         : status == CompletionStatus::Status::positiveComplete();
}

/// Whether an undo takes this row back: anything but what filling in would write again.
bool canBeTakenBack(const TaskLogEntryEntity& row) {
  const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
  if (!type || !marksHistory(*type)) return false;
  return isCompletedFullOrPartial(*type) || !isAutomatic(*type);
}

std::string commandText(std::string_view verb, const std::vector<TaskEntity*>& tasks) {
  std::string text(verb);
  for (const TaskEntity* task : tasks) text += fmt::format(" '{}'", task->title.value_or(""));
  return text;
}

}  // namespace

HabitSummary Application::add(std::string_view title) {
  std::string text = trimmed(title);
  checkTitle(text);
  const auto context = rooms_->manager.context();
  context->beginUnit();
  const auto tasks = TaskProcessor::activeTasks(*context);
  if (std::any_of(tasks.begin(), tasks.end(), [&](const TaskEntity* task) { return task->title == text; }))
    throw qz::Error(fmt::format("there is a habit called '{}' already", text));

  const qz::Moment now = rooms_->now();
  TaskEntity values = newlyMadeTask(std::move(text), qz::DayOfWeek::defaultFirst(), now,
                                    rooms_->calendars.ofDevice().timeZone.identifier());
  values.uniqueId = rooms_->manager.generateUniqueTaskId(*context, qz::UniqueID::generate(now)).text();
  values.displayOrder = StoredPages(*context).nextDisplayOrder(TaskPageNumber::first());
  TaskEntity& task = context->insert(values);
  rooms_->processor.process(*context, task, now);
  context->save({.author = Author::app, .command = commandText("add", {&task})});
  return rooms_->summarize(*context, task);
}

std::vector<Marked> Application::mark(std::string_view verb, TaskLogEntryType type,
                                      const std::vector<std::string>& names) {
  if (names.empty()) return {};
  const auto context = rooms_->contextToChange(names.front());
  std::vector<TaskEntity*> tasks;
  for (const std::string& name : names) {
    TaskEntity& task = rooms_->lookUp(*context, name);
    if (std::find(tasks.begin(), tasks.end(), &task) == tasks.end()) tasks.push_back(&task);
  }

  const qz::Moment now = rooms_->now();
  std::vector<Marked> marked;
  for (TaskEntity* task : tasks) {
    rooms_->processor.process(*context, *task, now);
    const HabitSummary before = rooms_->summarize(*context, *task);
    if (isMarked(before, type)) {
      marked.push_back({Marked::Outcome::already, before});
      continue;
    }
    rooms_->record(*context, *task, type, periodHolding(*task, rooms_->calendars.of(*task).day(now)), now);
    rooms_->processor.process(*context, *task, now);
    marked.push_back({Marked::Outcome::recorded, rooms_->summarize(*context, *task)});
  }
  context->save({.author = Author::app, .command = commandText(verb, tasks)});
  return marked;
}

std::vector<Marked> Application::done(const std::vector<std::string>& names) {
  return mark("done", TaskLogEntryType::completedManuallyFull, names);
}

std::vector<Marked> Application::skip(const std::vector<std::string>& names) {
  return mark("skip", TaskLogEntryType::skippedManuallyFull, names);
}

HabitSummary Application::undo(std::string_view name, std::optional<qz::YYYYMMDD> day) {
  const auto context = rooms_->contextToChange(name);
  TaskEntity& task = rooms_->lookUp(*context, name);
  const qz::Moment now = rooms_->now();
  const TaskCalendar calendar = rooms_->calendars.of(task);
  const qz::YYYYMMDD today = calendar.day(now);
  const qz::YYYYMMDD undone = day.value_or(today);
  const std::string title = task.title.value_or("");
  if (undone > today) throw qz::Error(fmt::format("{} has not come yet for '{}'", undone.debugDescription(), title));

  const DatedPeriod period = periodHolding(task, undone);
  const auto rows =
      context->fetchLogEntries(task.objectID, storedDay(period.period.startDate), storedDay(period.period.finishDate));
  if (std::none_of(rows.begin(), rows.end(), canBeTakenBack))
    throw qz::Error(fmt::format("nothing to undo: '{}' has no entry on {}", title, undone.debugDescription()));

  rooms_->processor.process(*context, task, now);
  const qz::Moment start = undone == today ? now : calendar.beginning(undone);
  rooms_->record(*context, task, TaskLogEntryType::unknown, period, start);
  rooms_->processor.process(*context, task, now);
  context->save({.author = Author::app, .command = commandText("undo", {&task})});
  return rooms_->summarize(*context, task);
}

}  // namespace habitra
