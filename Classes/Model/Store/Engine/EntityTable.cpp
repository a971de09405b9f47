#include <HabitraModel/Store/Engine/EntityTable.h>
#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/Trap.h>

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace habitra {

namespace {

std::string columnList(const EntityDescription& entity) {
  std::string list = "objectID, checksum";
  for (const AttributeDescription& attribute : entity.attributes) list.append(", ").append(attribute.name);
  return list;
}

std::string insertText(const EntityDescription& entity) {
  std::string text = fmt::format("INSERT INTO {} ({}) VALUES (?, ?", entity.name, columnList(entity));
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) text += ", ?";
  return text + ")";
}

bool isLog(const EntityDescription& entity) { return entity.layout == Layout::byTaskAndDay; }

std::string keyCondition(const EntityDescription& entity) {
  return isLog(entity) ? fmt::format(" WHERE objectID=? AND {}=? AND task=?", entity.dayAttribute)
                       : " WHERE objectID=?";
}

// A column that holds what its type says is read into the field; anything else is damage.

bool read(const Column& column, bool& value) {
  const std::int64_t raw = column.integer();
  value = raw != 0;
  return column.isInteger() && (raw == 0 || raw == 1);
}
template <std::signed_integral T>
bool read(const Column& column, T& value) {
  const std::int64_t raw = column.integer();
  if (!column.isInteger() || !std::in_range<T>(raw)) return false;
  value = static_cast<T>(raw);
  return true;
}
bool read(const Column& column, double& value) {
  value = column.real();
  return column.isReal() && std::isfinite(value);
}
bool read(const Column& column, std::string& value) {
  if (!column.isText()) return false;
  value = column.text();
  return true;
}
bool read(const Column& column, Bytes& value) {
  if (!column.isBytes()) return false;
  value = column.bytes();
  return true;
}
bool read(const Column& column, qz::Moment& value) {
  value = qz::Moment(std::chrono::microseconds(column.integer()));
  return column.isInteger();
}

void bind(Statement& statement, int parameter, bool value) { statement.bind(parameter, std::int64_t{value}); }
template <std::signed_integral T>
void bind(Statement& statement, int parameter, T value) {
  statement.bind(parameter, std::int64_t{value});
}
void bind(Statement& statement, int parameter, double value) { statement.bind(parameter, value); }
void bind(Statement& statement, int parameter, const std::string& value) {
  statement.bind(parameter, std::string_view(value));
}
void bind(Statement& statement, int parameter, const Bytes& value) {
  statement.bind(parameter, std::span<const std::uint8_t>(value));
}
void bind(Statement& statement, int parameter, qz::Moment value) {
  statement.bind(parameter, std::int64_t{value.time_since_epoch().count()});
}

}  // namespace

EntityTable::EntityTable(Connection& connection, const EntityDescription& entity)
    : connection_(connection),
      entity_(entity),
      columns_(columnList(entity)),
      whereKey_(keyCondition(entity)),
      byKey_(connection, select(whereKey_)),
      all_(connection, select(isLog(entity) ? fmt::format(" ORDER BY task, {}, objectID", entity.dayAttribute)
                                            : std::string(" ORDER BY objectID"))),
      insert_(connection, insertText(entity)),
      erase_(connection, fmt::format("DELETE FROM {}{}", entity.name, whereKey_)) {}

std::string EntityTable::select(std::string_view rest) const {
  return fmt::format("SELECT {} FROM {}{}", columns_, entity_.name, rest);
}

std::int64_t EntityTable::load(Statement& statement, void* object) const {
  entity_.objectID(object) = ObjectID{statement.integer(0)};
  for (std::size_t i = 0; i < entity_.attributes.size(); ++i) {
    const Column column = statement.column(static_cast<int>(i) + 2);
    const bool isRead = visitField(entity_.attributes[i], object, [&column]<typename T>(T& value) {
      if constexpr (std::is_same_v<T, ObjectID>) {
        value = ObjectID{column.integer()};
        return column.isNull() || column.isInteger();
      } else if constexpr (isOptionalField<T>) {
        if (!column.isNull()) return read(column, value.emplace());
        value.reset();
        return true;
      } else {
        return read(column, value);
      }
    });
    if (!isRead) refuse(ObjectID{statement.integer(0)}, entity_.attributes[i].name);
  }
  return statement.integer(1);
}

void EntityTable::refuse(ObjectID row, std::string_view attribute) const {
  throw StoreError(StoreError::Kind::damaged,
                   fmt::format("{} is damaged: {}{}row {} of {} holds what it cannot hold; restore a backup of it",
                               connection_.file().string(), attribute, attribute.empty() ? "" : " of ", rawValue(row),
                               entity_.name));
}

std::optional<std::int64_t> EntityTable::find(const LogKey& key, void* object) {
  auto statement = byKey_.use();
  bindKey(*statement, 1, key);
  if (!statement->step()) return std::nullopt;
  return load(*statement, object);
}

Query& EntityTable::where(std::string_view attribute) {
  const auto found = byAttribute_.find(attribute);
  if (found != byAttribute_.end()) return found->second;
  qz::require(attribute == "objectID" || entity_.position(attribute).has_value(),
              "a fetch by an attribute that the entity does not have");
  // IS finds by the index like =, and none as well.
  const std::string sql = select(fmt::format(" WHERE {} IS ? ORDER BY objectID", attribute));
  return byAttribute_.try_emplace(std::string(attribute), connection_, sql).first->second;
}

Query& EntityTable::betweenDays(std::string_view relationship) {
  const auto found = betweenDays_.find(relationship);
  if (found != betweenDays_.end()) return found->second;
  qz::require(!entity_.dayAttribute.empty(), "rows without a day are fetched by days");
  qz::require(entity_.position(relationship).has_value(), "a fetch by a relationship that the entity does not have");
  const std::string sql = select(fmt::format(" WHERE {0} IS ? AND {1} BETWEEN ? AND ? ORDER BY {1}, objectID",
                                             relationship, entity_.dayAttribute));
  return betweenDays_.try_emplace(std::string(relationship), connection_, sql).first->second;
}

void EntityTable::bindTarget(Statement& statement, ObjectID target) const { bindReference(statement, 1, target); }

void EntityTable::bindDays(Statement& statement, ObjectID target, std::int32_t from, std::int32_t to) const {
  bindLogDays(statement, target, from, to);
  bindTarget(statement, target);
}

void EntityTable::bindLogDays(Statement& statement, ObjectID task, std::int32_t from, std::int32_t to) {
  statement.bind(1, rawValue(task));
  statement.bind(2, std::int64_t{from});
  statement.bind(3, std::int64_t{to});
}

void EntityTable::insert(const void* object, std::int64_t checksum) {
  auto statement = insert_.use();
  statement->bind(1, rawValue(entity_.objectID(const_cast<void*>(object))));
  statement->bind(2, checksum);
  for (std::size_t i = 0; i < entity_.attributes.size(); ++i) bindField(*statement, static_cast<int>(i) + 3, i, object);
  statement->step();
}

void EntityTable::update(const LogKey& key, AttributeSet attributes, const void* object, std::int64_t checksum) {
  auto statement = updateOf(attributes).use();
  statement->bind(1, checksum);
  int parameter = 2;
  for (std::size_t i = 0; i < entity_.attributes.size(); ++i)
    if (attributes.contains(i)) bindField(*statement, parameter++, i, object);
  bindKey(*statement, parameter, key);
  statement->step();
}

void EntityTable::erase(const LogKey& key) {
  auto statement = erase_.use();
  bindKey(*statement, 1, key);
  statement->step();
}

Query& EntityTable::updateOf(AttributeSet attributes) {
  const auto found = updates_.find(attributes.bits());
  if (found != updates_.end()) return found->second;
  std::string text = fmt::format("UPDATE {} SET checksum=?", entity_.name);
  for (std::size_t i = 0; i < entity_.attributes.size(); ++i)
    if (attributes.contains(i)) text += fmt::format(", {}=?", entity_.attributes[i].name);
  return updates_.try_emplace(attributes.bits(), connection_, text + whereKey_).first->second;
}

LogKey EntityTable::key(const void* object) const {
  if (isLog(entity_)) return static_cast<const TaskLogEntryEntity*>(object)->key();
  return {.objectID = entity_.objectID(const_cast<void*>(object))};
}

void EntityTable::bindKey(Statement& statement, int first, const LogKey& key) const {
  statement.bind(first, rawValue(key.objectID));
  if (!isLog(entity_)) return;
  statement.bind(first + 1, std::int64_t{key.entryDate});
  statement.bind(first + 2, rawValue(key.task));
}

void EntityTable::bindReference(Statement& statement, int parameter, ObjectID target) const {
  // Only the log's key holds 0 for no task.
  if (target == ObjectID::none && !isLog(entity_))
    statement.bindNull(parameter);
  else
    statement.bind(parameter, rawValue(target));
}

void EntityTable::bindField(Statement& statement, int parameter, std::size_t position, const void* object) const {
  visitField(entity_.attributes[position], object, [&]<typename T>(const T& value) {
    if constexpr (std::is_same_v<T, ObjectID>) {
      bindReference(statement, parameter, value);
    } else if constexpr (isOptionalField<T>) {
      if (value)
        bind(statement, parameter, *value);
      else
        statement.bindNull(parameter);
    } else {
      bind(statement, parameter, value);
    }
  });
}

}  // namespace habitra
