#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/EntityTable.h>
#include <HabitraModel/Store/History/History.h>
#include <HabitraModel/Store/StoreContext.h>

#include <map>
#include <memory>
#include <string>

namespace habitra {

/// What the rows of a transaction were before it: from its history, or from the backup that was made before it.
class EarlierValues {
 public:
  /// `refusal` is how the message of an error begins.
  EarlierValues(StoreContext& context, StoredTransaction transaction, std::string refusal);
  ~EarlierValues();

  /// Puts into `object` what the row of an update or a removal was: all of it, or at least what the change names.
  /// Throws UndoStack::Error of reason `valuesGone` when that is not known, or the backup cannot be used.
  void read(const StoredChange& change, const EntityDescription& entity, void* object);
  /// The same, but gives false when it is not known; of an insertion nothing is.
  [[nodiscard]] bool readIfKnown(const StoredChange& change, const EntityDescription& entity, void* object);

 private:
  void openBackup();
  /// Whether the backup was made right before the transaction, of this store or of the one that this is a copy of.
  [[nodiscard]] bool wasMadeBefore();
  [[noreturn]] void fail(std::string_view why) const;

  StoreContext& context_;
  StoredTransaction transaction_;
  std::string refusal_;
  std::unique_ptr<Connection> backup_;  ///< opened when history lacks values
  bool isUnusable_ = false;             ///< it was looked for in vain
  std::map<EntityNumber, EntityTable> tables_;
};

}  // namespace habitra
