#pragma once

#include <HabitraModel/Undo/CommandList.h>

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace habitra {

/// A row of any entity.
using RowID = std::pair<EntityNumber, ObjectID>;

/// What was saved after a command.
class LaterChanges {
 public:
  struct OfCommand {
    const CommandList::Entry* command;
    StoredChange change;
  };

  /// `rows` are those that the command touched. `commands` must live as long.
  LaterChanges(StoreContext& context, const CommandList& commands, std::int64_t sequence, const std::set<RowID>& rows);

  /// What the commands that stand have changed, oldest first.
  [[nodiscard]] const std::vector<OfCommand>& ofCommands() const { return ofCommands_; }
  /// The attributes of one of `rows` that others have changed since, passes and programs included.
  [[nodiscard]] AttributeSet attributes(const RowID& row) const;
  /// Whether the entry of the log came later; not, when it only came back.
  [[nodiscard]] bool hasInserted(ObjectID entry) const { return insertedEntries_.contains(entry); }

 private:
  std::vector<OfCommand> ofCommands_;
  std::map<RowID, AttributeSet> attributes_;
  std::set<ObjectID> insertedEntries_;
};

}  // namespace habitra
