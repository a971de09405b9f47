#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/UndoStack.h>

#include <cstdint>
#include <string>
#include <vector>

namespace habitra {

/// The newest commands of a store, and what has become of each.
class CommandList {
 public:
  enum class Kind {
    command,
    undo,  ///< took a command back
    redo,  ///< took an undo back
  };
  struct Entry {
    StoredTransaction transaction;
    Kind kind = Kind::command;
    bool isTakenBack = false;

    /// Whether what it did still counts as a person's doing. An undo does not: it made things as they were.
    [[nodiscard]] bool stands() const { return kind == Kind::command && !isTakenBack; }
    [[nodiscard]] UndoStack::Command command() const;
  };

  /// Reads the last UndoStack::reach of them, with the undos and redos among and after them.
  explicit CommandList(StoreContext& context);

  /// Newest first.
  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  /// The entry of a transaction, or null.
  [[nodiscard]] const Entry* find(std::int64_t sequence) const;
  /// The newest command that stands, or null.
  [[nodiscard]] const Entry* newest() const;
  /// The newest undo that counts, when no command came after it; or null.
  [[nodiscard]] const Entry* newestUndo() const;
  /// How a message begins that says why an entry is not taken back: "'tidy' cannot be undone". Taking an undo back is
  /// called after the command that would be put back.
  [[nodiscard]] std::string refusal(const Entry& entry) const;

 private:
  std::vector<Entry> entries_;
};

}  // namespace habitra
