#pragma once

#include <HabitraModel/Store/StoredObjects.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Undo/CommandList.h>
#include <HabitraModel/Undo/LaterChanges.h>
#include <HabitraModel/Undo/TouchedRow.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// What later commands did that stands in the way of taking one back. Reads only.
class UndoObstacles {
 public:
  /// All that is given must live longer. `touched` are the rows of `target`.
  UndoObstacles(StoreContext& context, const TaskCalendars& calendars, const CommandList& commands,
                const CommandList::Entry& target, const LaterChanges& later, std::vector<TouchedRow>& touched)
      : context_(context),
        objects_(context),
        calendars_(calendars),
        commands_(commands),
        target_(target),
        later_(later),
        touched_(touched) {}

  /// Throws UndoStack::Error of reason `inTheWay` or `rowsGone`. Marks the rows that are not to come back, since what
  /// they led to is gone for good, or since somebody else has put them there again.
  void check();

 private:
  void refuseRowsTouchedAgain();
  void refuseWhatIsBuiltUpon();
  /// Of two entries for one period the later one may have been made in place of what would come back.
  void refuseWhatWasRecordedInstead();
  /// A row that would come back beside one that was added anew in its place.
  void checkDouble(TouchedRow& touched);
  /// A setting is what its key is, in whatever row.
  void refuseSettingGivenAgain(const TouchedRow& touched);
  /// An entry in whose place a program has recorded another since.
  void checkReplaced(TouchedRow& touched);
  /// What would come back may lead to a row that is gone.
  void checkReferences(TouchedRow& touched);
  /// Entries mean what the rules made of them when they were recorded.
  void refuseWhatWasRecordedByOtherRules();
  void refuseWhatWasSealed();
  /// To avoid, an earlier failure takes the allowance of a later one.
  void refuseFailuresThatFollow();

  /// Nobody is told that something is undone of which nothing is left.
  void refuseWhatIsGone();

  /// Whether a program has removed what the row belonged to, or the row that was changed.
  [[nodiscard]] bool isGone(const TouchedRow& touched);
  [[nodiscard]] bool isThere(const EntityDescription& entity, ObjectID id);
  /// Of an entry: whether it comes back to a period where it no longer is.
  [[nodiscard]] bool comesBack(const TouchedRow& touched);
  /// The rows of which `touched` would be a double.
  [[nodiscard]] std::vector<ObjectID> doublesOf(const TouchedRow& touched);
  /// The objects that have this of `touched`, an identifier or something that has one such row.
  [[nodiscard]] std::vector<void*> alikeBy(const TouchedRow& touched, const AttributeDescription& attribute);
  /// REQUIRES: a row that was there before.
  [[nodiscard]] static ObjectID taskOf(const TouchedRow& touched);
  [[nodiscard]] bool willBeThere(const EntityDescription& entity, ObjectID id);
  /// The forms of an entry before and after the command.
  [[nodiscard]] std::vector<TaskLogEntryEntity> formsOf(const TouchedRow& touched);
  /// The entries of the log that the command touched and that are not derived, by their task.
  [[nodiscard]] std::map<ObjectID, std::vector<TaskLogEntryEntity>> touchedEntries();

  [[noreturn]] void refuse(const LaterChanges::OfCommand& obstacle);
  [[noreturn]] void refuse(const CommandList::Entry& command, ObjectID task);
  [[nodiscard]] std::optional<std::string> titleOf(ObjectID task);

  StoreContext& context_;
  StoredObjects objects_;
  const TaskCalendars& calendars_;
  const CommandList& commands_;
  const CommandList::Entry& target_;
  const LaterChanges& later_;
  std::vector<TouchedRow>& touched_;
  std::set<RowID> comingBack_;
  std::set<RowID> orphans_;  ///< rows that do not come back, since what they belong to is gone
};

}  // namespace habitra
