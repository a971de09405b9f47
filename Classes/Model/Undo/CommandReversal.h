#pragma once

#include <HabitraModel/Store/OwnedObject.h>
#include <HabitraModel/Store/StoredObjects.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Undo/CommandList.h>
#include <HabitraModel/Undo/LaterChanges.h>
#include <HabitraModel/Undo/TaskRewind.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// Takes back what one transaction did. Everything is read and looked at before anything is written.
class CommandReversal {
 public:
  CommandReversal(StoreContext& context, const TaskCalendars& calendars, const CommandList& commands,
                  const CommandList::Entry& target);

  /// Throws UndoStack::Error before it has written anything. REQUIRES: an open unit.
  UndoStack::Undone run();

 private:
  /// A row that the transaction touched, and what it was before when it was there.
  struct Touched {
    StoredChange change;
    const EntityDescription* entity;
    std::optional<OwnedObject> earlier;
    bool isDerived = false;
    bool isLeftOut = false;  ///< it has nothing to stand on any more

    [[nodiscard]] RowID row() const { return {change.entity, change.object}; }
  };

  void readTouched();
  // Looking
  void refuseWhatOthersTouched();
  void refuseWhatOthersBuiltUpon();
  /// Of two entries for one period the later one may have been made in place of what would come back.
  void refuseWhatOthersRecordedInstead();
  /// Of an entry: whether it comes back to a period where it no longer is.
  [[nodiscard]] bool comesBack(const Touched& touched);
  void checkReferences(Touched& touched);
  [[nodiscard]] bool willBeThere(const EntityDescription& entity, ObjectID id);
  [[noreturn]] void refuse(const LaterChanges::OfCommand& obstacle);
  [[nodiscard]] std::optional<std::string> habitOf(const StoredChange& change);
  /// The rows that the row of a change leads to.
  [[nodiscard]] std::set<RowID> targetsOf(const StoredChange& change);
  [[nodiscard]] ObjectID taskOf(const StoredChange& change);

  // Writing
  void putBackObjects();
  void putBackEntries();
  void removeInserted();
  [[nodiscard]] std::set<RowID> rowsThatTheTargetPutBack();
  void restore(const Touched& touched, void* object) const;
  void putBackEntry(Touched& touched);
  [[nodiscard]] AttributeSet toRestore(const Touched& touched) const;

  StoreContext& context_;
  StoredObjects objects_;
  const CommandList::Entry& target_;
  std::vector<Touched> touched_;
  std::set<RowID> rows_;
  std::set<RowID> removed_;  ///< of them, those that come back
  std::optional<LaterChanges> later_;
  std::optional<TaskRewind> rewind_;
  const CommandList& commands_;
  const TaskCalendars& calendars_;
};

}  // namespace habitra
