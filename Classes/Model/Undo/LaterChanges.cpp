#include <HabitraModel/Undo/LaterChanges.h>

namespace habitra {

namespace {

/// What a transaction removed, so that its undo put it back.
std::set<ObjectID> entriesRemovedBy(StoreContext& context, std::int64_t sequence) {
  std::set<ObjectID> removed;
  context.readChanges(sequence, [&removed](const StoredChange& change) {
    if (change.entity == EntityNumber::taskLogEntry && change.kind == ChangeKind::removal)
      removed.insert(change.object);
  });
  return removed;
}

}  // namespace

LaterChanges::LaterChanges(StoreContext& context, const CommandList& commands, std::int64_t sequence,
                           const std::set<RowID>& rows) {
  std::vector<StoredTransaction> later;
  context.readTransactions(sequence, [&later](const StoredTransaction& transaction) { later.push_back(transaction); });
  for (const StoredTransaction& transaction : later) {
    const CommandList::Entry* const command = commands.find(transaction.sequence);
    // A command that was taken back and its undo have come to nothing.
    const bool cameToNothing = command != nullptr && !command->stands();
    std::set<ObjectID> putBack;
    if (transaction.undoes) putBack = entriesRemovedBy(context, *transaction.undoes);
    context.readChanges(transaction.sequence, [&](const StoredChange& change) {
      if (change.entity == EntityNumber::taskLogEntry && change.kind == ChangeKind::insertion &&
          !putBack.contains(change.object))
        insertedEntries_.insert(change.object);
      if (cameToNothing) return;
      const RowID row{change.entity, change.object};
      if (rows.contains(row)) attributes_[row] = attributes_[row] | change.attributes;
      if (command != nullptr) ofCommands_.push_back({command, change});
    });
  }
}

AttributeSet LaterChanges::attributes(const RowID& row) const {
  const auto found = attributes_.find(row);
  return found == attributes_.end() ? AttributeSet() : found->second;
}

}  // namespace habitra
