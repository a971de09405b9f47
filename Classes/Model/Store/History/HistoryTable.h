#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/EntityTable.h>
#include <HabitraModel/Store/History/History.h>

#include <functional>
#include <optional>

namespace habitra {

/// The rows of the store's history. A transaction has one change per object: what happens to an object again within a
/// transaction is joined with what it was before.
class HistoryTable {
 public:
  explicit HistoryTable(Connection& connection);

  /// What the transaction says of an object, before and after something is recorded; none: it says nothing.
  struct Recorded {
    std::optional<ChangeKind> earlier;
    std::optional<ChangeKind> now;
  };

  /// `before`: the object as it was, for an update or a removal; `changed`: the attributes that an update changes.
  Recorded recordInsertion(std::int64_t sequence, const EntityTable& table, const void* object);
  Recorded recordUpdate(std::int64_t sequence, const EntityTable& table, const void* before, const void* object,
                        AttributeSet changed);
  Recorded recordRemoval(std::int64_t sequence, const EntityTable& table, const void* before);

  /// Whether the transaction has done anything to the object.
  [[nodiscard]] bool hasChange(std::int64_t sequence, EntityNumber entity, ObjectID object) {
    return find(sequence, entity, object).has_value();
  }

  void writeTransaction(const StoredTransaction& transaction);
  /// Drops the values before; for saves that no person's command asked for. Those of removed requests to the health
  /// store stay: what they have written there has still to be taken out, whoever removed them.
  void dropBefore(std::int64_t sequence);

  void readTransactions(std::int64_t afterSequence, std::int64_t limit,
                        const std::function<void(const StoredTransaction&)>& sink);
  /// The transactions that were made for commands, undos included, newest first, back to firstCommand(limit).
  void readCommands(std::int64_t limit, const std::function<void(const StoredTransaction&)>& sink);
  /// The first of the last `count` commands, or the oldest transaction made for one when there are fewer; none when
  /// there is none. What took a command back, or an undo, does not count: many undos must not push a command out.
  [[nodiscard]] std::optional<std::int64_t> firstCommand(std::int64_t count);
  /// Throws StoreError of kind `damaged` for a row that is no change.
  void readChanges(std::int64_t sequence, const std::function<void(const StoredChange&)>& sink);
  /// The changes of one entity's rows in the transactions after `after` up to `last`, by transaction and object. Costs
  /// no more for what the transactions did to other entities. Throws the same.
  void readChanges(EntityNumber entity, std::int64_t after, std::int64_t last,
                   const std::function<void(const StoredChange&)>& sink);
  [[nodiscard]] std::optional<std::int64_t> oldestSequence();

 private:
  [[nodiscard]] std::optional<StoredChange> find(std::int64_t sequence, EntityNumber entity, ObjectID object);
  [[nodiscard]] static StoredChange load(Statement& statement);
  [[nodiscard]] static StoredTransaction loadTransaction(Statement& statement);
  void write(const StoredChange& change);
  void erase(const StoredChange& change);

  Query insertTransaction_;
  Query dropBefore_;
  Query transactions_;
  Query commands_;
  Query nthCommand_;
  Query oldestCommand_;
  Query oldest_;
  Query changes_;
  Query changesOfEntity_;
  Query change_;
  Query writeChange_;
  Query eraseChange_;
};

}  // namespace habitra
