#include <HabitraModel/Undo/CommandList.h>
#include <HabitraModel/Undo/CommandReversal.h>
#include <HabitraModel/UndoStack.h>
#include <QZKit/Trap.h>

#include <fmt/format.h>

namespace habitra {

namespace {

using Reason = UndoStack::Error::Reason;

/// Runs `step` in a unit. When it fails, the unit is given up if it was begun for it or anything was written.
template <typename Step>
UndoStack::Undone inUnit(StoreContext& context, const Step& step) {
  qz::require(!context.hasChanges(), "a command is taken back among unsaved changes");
  const bool isOwnUnit = !context.isInUnit();
  context.beginUnit();
  try {
    UndoStack::Undone undone = step();
    context.noteUndo(undone.command.sequence);
    return undone;
  } catch (...) {
    if (isOwnUnit || context.hasChanges()) context.rollback();
    throw;
  }
}

}  // namespace

std::optional<UndoStack::Command> UndoStack::newest(StoreContext& context) const {
  const CommandList commands(context);
  const CommandList::Entry* const newest = commands.newest();
  return newest == nullptr ? std::nullopt : std::optional(newest->command());
}

std::optional<UndoStack::Command> UndoStack::newestUndone(StoreContext& context) const {
  const CommandList commands(context);
  const CommandList::Entry* const undo = commands.newestUndo();
  const CommandList::Entry* const undone = undo == nullptr ? nullptr : commands.find(*undo->transaction.undoes);
  return undone == nullptr ? std::nullopt : std::optional(undone->command());
}

std::vector<UndoStack::Command> UndoStack::list(StoreContext& context, std::size_t limit) const {
  std::vector<Command> standing;
  const CommandList commands(context);
  for (const CommandList::Entry& entry : commands.entries()) {
    if (standing.size() >= limit) break;
    if (entry.stands()) standing.push_back(entry.command());
  }
  return standing;
}

UndoStack::Undone UndoStack::undo(StoreContext& context) const {
  return inUnit(context, [&] {
    const CommandList commands(context);
    const CommandList::Entry* const newest = commands.newest();
    if (newest == nullptr) throw Error(Reason::nothingToUndo, "there is nothing to undo");
    return CommandReversal(context, calendars_, commands, *newest).run();
  });
}

UndoStack::Undone UndoStack::undo(StoreContext& context, std::int64_t sequence) const {
  return inUnit(context, [&] {
    const CommandList commands(context);
    const CommandList::Entry* const entry = commands.find(sequence);
    if (entry == nullptr || entry->kind != CommandList::Kind::command)
      throw Error(Reason::notReached,
                  fmt::format("{} is none of the last {} commands, which can be undone", sequence, reach));
    if (entry->isTakenBack)
      throw Error(Reason::takenBack, fmt::format("'{}' has been undone already", entry->command().text));
    return CommandReversal(context, calendars_, commands, *entry).run();
  });
}

UndoStack::Undone UndoStack::redo(StoreContext& context) const {
  return inUnit(context, [&] {
    const CommandList commands(context);
    const CommandList::Entry* const undo = commands.newestUndo();
    if (undo == nullptr) throw Error(Reason::nothingToRedo, "there is nothing to redo");
    return CommandReversal(context, calendars_, commands, *undo).run();
  });
}

}  // namespace habitra
