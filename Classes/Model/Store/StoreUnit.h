#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Files/StoreChangeSignal.h>
#include <HabitraModel/Store/Files/WritersTurn.h>
#include <HabitraModel/Store/History/HistoryTable.h>
#include <HabitraModel/Store/Store.h>

#include <memory>
#include <optional>

namespace habitra {

/// The transactions of a context: views to read in, and units to write in under the writers' turn.
class StoreUnit {
 public:
  explicit StoreUnit(std::shared_ptr<Store> store);
  ~StoreUnit();
  StoreUnit(const StoreUnit&) = delete;
  StoreUnit& operator=(const StoreUnit&) = delete;

  [[nodiscard]] Store& store() const { return *store_; }
  [[nodiscard]] Connection& connection() { return *connection_; }
  [[nodiscard]] bool isWriting() const { return state_ == State::writing; }

  /// Makes sure that there is a view or a unit. Gives true when the store has moved since the last one.
  bool beginView();
  /// Ends a view; keeps a unit.
  void endView() noexcept;
  /// Takes the turn and begins a unit. Gives true when the store has moved since the last view. REQUIRES: no unit.
  bool begin();
  /// Commits a unit, makes the write-ahead log shorter when it is long, and gives up the turn. A transaction becomes
  /// the newest one, and others are told of it. On failure everything is rolled back.
  void commit(const std::optional<StoredTransaction>& transaction);
  /// Ends a unit or view and takes back what was written in it.
  void rollback() noexcept;

  // As of the view.
  [[nodiscard]] std::int64_t sequence() const { return newest_.sequence; }
  /// The latest moment of any transaction, which need not be the newest one's: clocks go back.
  [[nodiscard]] std::optional<qz::Moment> newestMoment() const { return newest_.moment; }
  [[nodiscard]] std::string storeIdentifier();

  /// The number of the transaction that the unit will make.
  [[nodiscard]] std::int64_t nextSequence() const { return newest_.sequence + 1; }
  /// A number for a new row. REQUIRES: a unit.
  [[nodiscard]] ObjectID nextObjectID();
  /// Whether a row may have had this number before. REQUIRES: a unit.
  [[nodiscard]] bool hasGiven(ObjectID id) const;

 private:
  enum class State { idle, viewing, writing };

  struct Newest {
    std::int64_t sequence = 0;
    ObjectID object = ObjectID::none;
    std::optional<qz::Moment> moment;
  };

  bool readNewest();
  void writeNewest(const Newest& newest);

  std::shared_ptr<Store> store_;
  std::unique_ptr<Connection> connection_;
  std::unique_ptr<WritersTurn> turn_;
  StoreChangeSignal signal_;
  Query beginView_;
  Query beginUnit_;
  Query commit_;
  Query readNewest_;
  Query writeNewest_;
  State state_ = State::idle;
  bool hasSeenStore_ = false;
  Newest newest_;
  ObjectID newestGiven_ = ObjectID::none;
};

}  // namespace habitra
