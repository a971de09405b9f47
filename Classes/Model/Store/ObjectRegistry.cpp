#include <HabitraModel/Store/Field.h>
#include <HabitraModel/Store/ObjectRegistry.h>
#include <HabitraModel/Store/RowCoding.h>
#include <QZKit/Trap.h>

namespace habitra {

namespace {

/// Sets the attributes that `which` holds to those of `from`.
void assignAttributes(const EntityDescription& entity, AttributeSet which, void* object, void* from) {
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    if (!which.contains(i)) continue;
    const AttributeDescription& attribute = entity.attributes[i];
    visitField(attribute, object, [&]<typename T>(T& value) { value = *static_cast<const T*>(attribute.field(from)); });
  }
}

}  // namespace

AttributeSet ObjectRegistry::Entry::changes() const {
  return isGone ? AttributeSet() : differences(*entity, live.get(), stored.get());
}

void ObjectRegistry::Entry::rememberBegun() {
  if (begun || isNew) return;
  begun.emplace(*entity, stored.get());
  begunChecksum = checksum;
}

ObjectRegistry::Entry* ObjectRegistry::find(ObjectID id) {
  const auto found = entries_.find(id);
  return found == entries_.end() ? nullptr : &found->second;
}

const ObjectRegistry::Entry& ObjectRegistry::entry(const EntityDescription& entity, const void* object) const {
  const auto found = entries_.find(entity.objectID(const_cast<void*>(object)));
  qz::require(found != entries_.end() && found->second.live.get() == object, "an object of another context");
  return found->second;
}

ObjectRegistry::Entry& ObjectRegistry::entry(const EntityDescription& entity, const void* object) {
  return const_cast<Entry&>(std::as_const(*this).entry(entity, object));
}

ObjectRegistry::Entry& ObjectRegistry::adopt(const EntityTable& table, Statement& statement) {
  const ObjectID id{statement.integer(0)};
  if (Entry* known = find(id)) return *known;
  Entry loaded(table.entity());
  loaded.checksum = table.load(statement, loaded.live.get());
  loaded.stored.assign(loaded.live.get());
  return entries_.try_emplace(id, std::move(loaded)).first->second;
}

ObjectRegistry::Entry& ObjectRegistry::insert(const EntityDescription& entity, ObjectID id, const void* values) {
  Entry& entry = entries_.try_emplace(id, entity).first->second;
  entry.live.assign(values);
  entry.live.objectID() = id;
  entry.stored.objectID() = id;
  entry.isWritten = false;
  entry.isNew = true;
  ++unwritten_;
  return entry;
}

void ObjectRegistry::forgetRemoved(ObjectID id) {
  const Entry* const entry = find(id);
  if (entry == nullptr || (entry->isWritten && !entry->isGone)) return;
  qz::require(entry->isGone && !entry->isNew && !entry->begun, "a row is put back before its removal is saved");
  entries_.erase(id);
}

void ObjectRegistry::refresh(const TableOf& tableOf) {
  for (auto& [id, entry] : entries_)
    if (entry.isWritten) refresh(entry, tableOf(*entry.entity));
}

void ObjectRegistry::refresh(Entry& entry, EntityTable& table) {
  OwnedObject row(*entry.entity);
  const auto checksum = table.find({.objectID = entry.live.objectID()}, row.get());
  if (!checksum) {
    entry.isGone = true;
    return;
  }
  entry.isGone = false;
  const AttributeSet theirs = differences(*entry.entity, row.get(), entry.stored.get());
  const AttributeSet ours = entry.changes();
  const AttributeSet different = differences(*entry.entity, row.get(), entry.live.get());
  if ((theirs.bits() & ours.bits() & different.bits()) != 0) entry.hasConflict = true;
  assignAttributes(*entry.entity, AttributeSet(theirs.bits() & ~ours.bits()), entry.live.get(), row.get());
  entry.stored.assign(row.get());
  entry.checksum = *checksum;
}

void ObjectRegistry::rollback() {
  std::erase_if(entries_, [](const auto& item) { return item.second.isNew; });
  unwritten_ = 0;
  for (auto& [id, entry] : entries_) {
    if (entry.begun) {
      entry.stored.assign(entry.begun->get());
      entry.checksum = entry.begunChecksum;
      entry.begun.reset();
      entry.isGone = false;
    }
    entry.live.assign(entry.stored.get());
    entry.hasConflict = false;
  }
}

void ObjectRegistry::commit() {
  std::erase_if(entries_, [](const auto& item) { return item.second.isGone; });
  for (auto& [id, entry] : entries_) {
    entry.begun.reset();
    entry.isNew = false;
  }
}

void ObjectRegistry::forgetUnchanged() {
  std::erase_if(entries_, [](const auto& item) {
    const Entry& entry = item.second;
    return entry.isWritten && entry.changes().isEmpty() && !entry.isGone;
  });
}

}  // namespace habitra
