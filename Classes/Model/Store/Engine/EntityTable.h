#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/OwnedObject.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {

/// The rows of one entity in SQL, whatever its layout: everything follows from the description. Knows nothing of
/// history or of identity.
class EntityTable {
 public:
  EntityTable(Connection& connection, const EntityDescription& entity);

  [[nodiscard]] const EntityDescription& entity() const { return entity_; }

  /// A row: its values go into an object, its checksum comes back. Throws StoreError when a column does not hold what
  /// the description says.
  std::int64_t load(Statement& statement, void* object) const;

  /// Throws the StoreError for a row that holds, in the attribute if one is named, what it cannot hold.
  [[noreturn]] void refuse(ObjectID row, std::string_view attribute = {}) const;

  /// Reads the row with this key (of which only the object counts, but for the log). Gives its checksum.
  [[nodiscard]] std::optional<std::int64_t> find(const LogKey& key, void* object);

  /// All rows, by key.
  [[nodiscard]] Query& all() { return all_; }
  /// Rows with a value of an attribute, or with an objectID (parameter 1, for a relationship by bindTarget), in order
  /// of creation. REQUIRES: the attribute exists.
  [[nodiscard]] Query& where(std::string_view attribute);
  /// Rows whose relationship leads to a row, between two days (parameters by bindDays), in order of day, then of
  /// creation. REQUIRES: an entity with a day, a relationship of it.
  [[nodiscard]] Query& betweenDays(std::string_view relationship);
  /// ObjectID::none asks for rows whose relationship leads nowhere.
  void bindTarget(Statement& statement, ObjectID target) const;
  void bindDays(Statement& statement, ObjectID target, std::int32_t from, std::int32_t to) const;
  /// The same for a query of the log, where no task is 0.
  static void bindLogDays(Statement& statement, ObjectID task, std::int32_t from, std::int32_t to);

  void insert(const void* object, std::int64_t checksum);
  /// Writes those attributes and the checksum over the row at `key`.
  void update(const LogKey& key, AttributeSet attributes, const void* object, std::int64_t checksum);
  void erase(const LogKey& key);

  /// Where the row of an object lies.
  [[nodiscard]] LogKey key(const void* object) const;

 private:
  [[nodiscard]] std::string select(std::string_view rest) const;
  [[nodiscard]] Query& updateOf(AttributeSet attributes);
  void bindKey(Statement& statement, int first, const LogKey& key) const;
  /// A reference as the tables hold it.
  void bindReference(Statement& statement, int parameter, ObjectID target) const;
  void bindField(Statement& statement, int parameter, std::size_t position, const void* object) const;

  Connection& connection_;
  const EntityDescription& entity_;
  std::string columns_;
  std::string whereKey_;
  Query byKey_;
  Query all_;
  Query insert_;
  Query erase_;
  std::map<std::string, Query, std::less<>> byAttribute_;
  std::map<std::string, Query, std::less<>> betweenDays_;
  std::map<std::uint64_t, Query> updates_;
};

}  // namespace habitra
