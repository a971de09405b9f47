#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>

/// The history of a store: one transaction per save, one change per object that it touched.
namespace habitra {

/// So many of a person's commands can be taken back, and history is kept for; undos and redos do not count.
inline constexpr std::int64_t undoableCommands = 200;

struct StoredTransaction {
  std::int64_t sequence = 0;  ///< ascends by one with each save; never given twice
  std::string author;         ///< raw value of Author
  std::string writer;         ///< the open store that wrote it
  qz::Moment moment;
  std::optional<std::string> command;  ///< the person's command that it was made for
  std::optional<std::int64_t> undoes;  ///< the transaction whose command it took back
  std::optional<std::string> backup;   ///< a copy of the store made before it, by file name

  friend bool operator==(const StoredTransaction&, const StoredTransaction&) = default;
};

/// The raw value is stored.
enum class ChangeKind : std::uint8_t { insertion = 1, update = 2, removal = 3 };

struct StoredChange {
  std::int64_t sequence = 0;
  EntityNumber entity = EntityNumber::task;
  ObjectID object = ObjectID::none;
  ChangeKind kind = ChangeKind::insertion;
  /// Of an update: what changed. Of an insertion or a removal: what was not at its default.
  AttributeSet attributes;
  /// For a log entry, where its row lies (or lay, when removed); for other entities none and 0.
  ObjectID task = ObjectID::none;
  std::int32_t day = 0;
  /// Kept when the save was made for a person's command, and of requests to the health store that are removed always:
  /// of an update the values before of what changed, of a removal the whole row, in the canonical encoding of rows.
  std::optional<Bytes> before;

  friend bool operator==(const StoredChange&, const StoredChange&) = default;
};

/// Puts the values before an update or a removal back into `object`, a struct of the change's entity; leaves what had
/// not changed. Gives false when the change kept no values. Throws StoreError when they cannot be read.
bool restoreBefore(const StoredChange& change, const EntityDescription& entity, void* object);

template <typename T>
bool restoreBefore(const StoredChange& change, T& object) {
  return restoreBefore(change, T::description(), &object);
}

}  // namespace habitra
