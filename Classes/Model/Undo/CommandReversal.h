#pragma once

#include <HabitraModel/Store/StoredObjects.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Undo/CommandList.h>
#include <HabitraModel/Undo/EarlierValues.h>
#include <HabitraModel/Undo/LaterChanges.h>
#include <HabitraModel/Undo/TaskRewind.h>
#include <HabitraModel/Undo/TouchedRow.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// Takes back what one transaction did. What may be refused is looked at before anything is written.
class CommandReversal {
 public:
  CommandReversal(StoreContext& context, const TaskCalendars& calendars, const CommandList& commands,
                  const CommandList::Entry& target);

  /// Throws UndoStack::Error before it has written anything. REQUIRES: an open unit.
  UndoStack::Undone run();

 private:
  // Looking
  void readTouched();
  void readEarlier(TouchedRow& touched, EarlierValues& values);
  [[nodiscard]] LaterChanges::Scope scope();
  /// The tasks whose days are judged by a setting.
  [[nodiscard]] std::set<ObjectID> tasksOfSetting(const TouchedRow& touched);
  [[nodiscard]] std::set<RowID> rowsThatTheTargetPutBack();

  // Writing
  void putBackObjects();
  void putBackObject(const TouchedRow& touched);
  void putBackEntries();
  void takeOutEntry(const TouchedRow& touched);
  void putBackEntry(const TouchedRow& touched);
  void changeBackEntry(const TouchedRow& touched);
  void removeInserted();
  void restore(const TouchedRow& touched, void* object) const;
  [[nodiscard]] AttributeSet toRestore(const TouchedRow& touched) const;

  StoreContext& context_;
  StoredObjects objects_;
  const TaskCalendars& calendars_;
  const CommandList& commands_;
  const CommandList::Entry& target_;
  std::vector<TouchedRow> touched_;
  std::set<RowID> rows_;
  std::set<RowID> inserted_;  ///< of them, those that go
  std::set<RowID> removed_;   ///< of them, those that come back
  std::optional<LaterChanges> later_;
  std::optional<TaskRewind> rewind_;
};

}  // namespace habitra
