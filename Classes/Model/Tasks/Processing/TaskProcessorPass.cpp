#include <HabitraModel/Tasks/Processing/Attempt.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorClock.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorPass.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace habitra {
namespace {

/// Whether every other task would fail by the same thing.
bool concernsTheWholeStore(const StoreError& error) {
  switch (error.kind()) {
    case StoreError::Kind::busy:
    case StoreError::Kind::diskFull:
    case StoreError::Kind::readOnly: return true;
    default: return false;
  }
}

}  // namespace

TaskProcessorReport TaskProcessorPass::run(const std::optional<std::set<qz::UniqueID>>& only) {
  context_.refresh();
  if (!clockCanBeRight(context_, now_)) return report_;
  const std::vector<Place> places = placesOf(only);
  attempt("What this device has processed is unknown", [&] { known_ = dates_.read(); });
  for (const Place& place : places)
    if (!process(place)) break;
  attempt("What this device has processed is not kept", [&] { keepDates(); });
  return report_;
}

auto TaskProcessorPass::placesOf(const std::optional<std::set<qz::UniqueID>>& only) -> std::vector<Place> {
  // By number: each task is a transaction of its own, after which another may be gone.
  std::vector<Place> places;
  std::set<std::string> found;
  for (const TaskEntity* task : context_.fetchAll<TaskEntity>()) {
    const std::string uniqueId = task->uniqueId.value_or("");
    const auto identifier = only ? qz::UniqueID::fromText(uniqueId) : std::nullopt;
    if (only && (!identifier || !only->contains(*identifier))) continue;
    found.insert(identifier ? identifier->text() : uniqueId);
    if (isActive(*task)) places.push_back({task->objectID, uniqueId});
  }
  if (only)
    for (const qz::UniqueID& id : *only)
      if (!found.contains(id.text())) qz::log::info("Unable to find task with ID {}", id.text());
  return places;
}

bool TaskProcessorPass::process(const Place& place) {
  try {
    surroundings_.operationQueue.sync([&] {
      TaskEntity* task = context_.find<TaskEntity>(place.object);
      if (task == nullptr)
        qz::log::info("Unable to find task with ID {}", place.uniqueId);
      else if (isActive(*task))
        operate(*task);
    });
    return true;
  } catch (const TaskProcessorSingleTaskOperation::ProcessorError& error) {
    // Whoever processes it does most of what was to be done here; what it leaves, like late data, the next pass does.
    qz::log::info("Task {} is left out of the pass: {}", place.uniqueId, error.what());
    return true;
  } catch (const std::exception& error) {
    qz::log::error("Task {} could not be processed: {}", place.uniqueId, error.what());
    context_.rollback();
    if (!report_.failure) report_.failure = std::current_exception();
    const auto* store = dynamic_cast<const StoreError*>(&error);
    return store == nullptr || !concernsTheWholeStore(*store);
  }
}

void TaskProcessorPass::operate(TaskEntity& task) {
  const auto here = task.uniqueId ? known_.find(*task.uniqueId) : known_.end();
  TaskProcessorSingleTaskOperation operation(
      surroundings_.tasks, context_, task, TaskModifyContext::systemInitiatedFromDeviceActivityExtension,
      surroundings_.layoutDirection, true, now_, here == known_.end() ? std::nullopt : std::optional(here->second));
  const auto result = operation.run();
  ++report_.tasks;
  if (result.taskWasUpdated) ++report_.changed;
  report_.filledIn += result.filledIn;
  report_.removed += result.removed;
  if (result.decidedPeriod) ++report_.decided;
  if (task.uniqueId && task.lastProcessedDate) processed_.insert_or_assign(*task.uniqueId, *task.lastProcessedDate);
}

void TaskProcessorPass::keepDates() {
  std::erase_if(processed_, [this](const auto& date) {
    const auto known = known_.find(date.first);
    return known != known_.end() && known->second == date.second;
  });
  dates_.merge(processed_);
}

}  // namespace habitra
