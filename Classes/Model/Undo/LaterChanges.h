#pragma once

#include <HabitraModel/Undo/CommandList.h>
#include <HabitraModel/Undo/EarlierValues.h>
#include <HabitraModel/Undo/TouchedRow.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// What was saved after a command and has to do with it. Of the history since, no more than that is kept in memory.
class LaterChanges {
 public:
  /// What a command has to do with.
  struct Scope {
    std::set<RowID> rows;      ///< that it touched
    std::set<RowID> inserted;  ///< of them, those that it added and that are not derived
    std::set<RowID> targets;   ///< that rows which come back lead to
    std::set<ObjectID> tasks;  ///< whose log or rules it touched
  };

  /// What a command that stands has done to a row; without values before.
  struct OfCommand {
    const CommandList::Entry* command;
    StoredChange change;
    bool isDerived = false;
    /// The rows that it leads to, or led to before it was removed.
    std::set<RowID> targets = {};
    /// Of a task its title, of a setting its key.
    std::optional<std::string> name = std::nullopt;

    [[nodiscard]] RowID row() const { return {change.entity, change.object}; }
    /// The task that it is about, if any.
    [[nodiscard]] ObjectID task() const;
  };

  /// `commands` must live as long.
  LaterChanges(StoreContext& context, const CommandList& commands, std::int64_t sequence, Scope scope);

  /// What the commands that stand have changed, oldest first: rows of the scope, those that lead to inserted ones, the
  /// logs of its tasks, and settings.
  [[nodiscard]] const std::vector<OfCommand>& ofCommands() const { return ofCommands_; }
  /// The command that stands and that added the row, an object or an entry of one of the tasks; or null.
  [[nodiscard]] const CommandList::Entry* inserter(const RowID& row) const;
  /// The attributes of one of the rows that others have changed since, passes and programs included.
  [[nodiscard]] AttributeSet attributes(const RowID& row) const;
  /// Whether the object was not there after the command, but came later or came back.
  [[nodiscard]] bool hasComeLater(const RowID& object) const;
  /// Whether the entry, of one of the tasks, came later; not, when it only came back.
  [[nodiscard]] bool hasInserted(ObjectID entry) const { return insertedEntries_.contains(entry); }
  /// The first day of such entries of a task; StoreContext::lastDay when there are none.
  [[nodiscard]] std::int32_t firstInsertedDay(ObjectID task) const;

 private:
  void read(const StoredTransaction& transaction, const CommandList::Entry* command);
  void noteInsertion(const StoredChange& change, const CommandList::Entry* command);
  [[nodiscard]] bool isOfScope(const StoredChange& change) const;
  [[nodiscard]] OfCommand described(StoredChange change, const CommandList::Entry& command, EarlierValues& values);

  StoreContext& context_;
  const CommandList& commands_;
  Scope scope_;
  std::vector<OfCommand> ofCommands_;
  std::map<RowID, const CommandList::Entry*> inserters_;
  std::map<RowID, AttributeSet> attributes_;
  std::map<RowID, ChangeKind> comingsAndGoings_;  ///< of an object the first insertion or removal
  std::set<ObjectID> insertedEntries_;
  std::map<ObjectID, std::int32_t> firstInsertedDays_;
};

}  // namespace habitra
