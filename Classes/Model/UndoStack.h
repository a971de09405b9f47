#pragma once

#include <HabitraModel/Store/ObjectID.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// Takes back what a person's commands did to the store, and puts it back again.
///
///     context.beginUnit();
///     const UndoStack::Undone undone = UndoStack(calendars).undo(context);
///     for (const UndoStack::TouchedTask& touched : undone.tasks) processor.process(context, …);
///     context.save(undone.saveRequest(Author::app, "undo " + undone.command.text));
///
/// Taking a command back is a save of its own with a history of its own: the rows that the command added go, those that
/// it removed come back under their old numbers, and what it changed in others is as it was. So it can be taken back in
/// turn, which is redo.
///
/// **What stands in the way**: a later command that touched the same row, unless that was taken back; one that added
/// something to what the command added, or removed what it led to; one that recorded or added something in place of
/// what would come back, or by rules that would no longer hold. What only passes and other programs wrote since is
/// kept, attribute by attribute, and nothing comes back beside what they put in its place. Where they removed the
/// habits or other rows that a command was about, so that nothing of it could be taken back, it stays.
///
/// **Derived rows** never stand in the way, and are worked out anew: temporal data, checkpoints, and the skips, misses
/// and allowed misses that passes filled in. Those of the changed periods and of the days that follow from them are
/// taken out where they came with the command or after it, and the task's last-processed date goes back to before the
/// first changed day; the caller's pass in the same unit fills in again. All is then as if the command had not been
/// given.
///
/// The last 200 commands can be taken back; undos and redos do not count among them. Belongs to the queue of the
/// context that it is given.
class UndoStack {
 public:
  /// A save that was made for a person.
  struct Command {
    std::int64_t sequence = 0;  ///< of its transaction
    std::string text;
    qz::Moment moment;

    friend bool operator==(const Command&, const Command&) = default;
  };

  /// A task that is to be processed again.
  struct TouchedTask {
    ObjectID task = ObjectID::none;
    /// The first day that is to be worked out anew; none: nothing of its past has changed.
    std::optional<qz::YYYYMMDD> day;

    friend bool operator==(const TouchedTask&, const TouchedTask&) = default;
  };

  struct Undone {
    Command command;                 ///< what was taken back
    std::vector<TouchedTask> tasks;  ///< those that are still there, in order of creation

    /// What the unit is to be saved with, and no other: once it was rolled back, save() refuses it. `text` is the
    /// command that it is saved as.
    [[nodiscard]] SaveRequest saveRequest(Author author, std::string text) const {
      return {.author = author, .command = std::move(text), .undoes = command.sequence};
    }
  };

  /// Why a command is not taken back. Nothing has been written then.
  class Error : public qz::Error {
   public:
    enum class Reason {
      nothingToUndo,
      nothingToRedo,
      notReached,  ///< no command of that number, or more than 200 commands old
      takenBack,   ///< it has been taken back already
      inTheWay,    ///< by `obstacle()`
      valuesGone,  ///< what was there before is no longer known: the backup is gone or not of this store
      rowsGone,    ///< all that it was about is gone, and by no command: a program removed it or united it with others
    };
    /// A later command, and the habit that both touched, if it is one.
    struct Obstacle {
      Command command;
      std::optional<std::string> habit;
    };

    Error(Reason reason, const std::string& message, std::optional<Obstacle> obstacle = std::nullopt)
        : qz::Error(message), reason_(reason), obstacle_(std::move(obstacle)) {}
    [[nodiscard]] Reason reason() const { return reason_; }
    [[nodiscard]] const std::optional<Obstacle>& obstacle() const { return obstacle_; }

   private:
    Reason reason_;
    std::optional<Obstacle> obstacle_;
  };

  static constexpr std::int64_t reach = undoableCommands;

  /// `calendars` tells the days of a task, and must live longer than the stack.
  explicit UndoStack(const TaskCalendars& calendars) : calendars_(calendars) {}

  /// What undo() would take back, and redo() put back.
  [[nodiscard]] std::optional<Command> newest(StoreContext& context) const;
  [[nodiscard]] std::optional<Command> newestUndone(StoreContext& context) const;

  /// The commands that stand and are in reach, newest first, at most `limit` of them.
  [[nodiscard]] std::vector<Command> list(StoreContext& context, std::size_t limit = reach) const;

  /// Takes the newest command back, or the one of that number, in the unit of `context`, which is begun when none is
  /// open, and which the caller saves. Throws Error, which leaves an open unit as it was, or StoreError, after which a
  /// unit that something had been written in is rolled back. REQUIRES: no unsaved changes.
  Undone undo(StoreContext& context) const;
  Undone undo(StoreContext& context, std::int64_t sequence) const;

  /// Puts back what the newest undo took, when no command came after it. The same otherwise.
  Undone redo(StoreContext& context) const;

 private:
  const TaskCalendars& calendars_;
};

}  // namespace habitra
