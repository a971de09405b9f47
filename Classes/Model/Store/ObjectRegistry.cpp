#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/ObjectRegistry.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <bit>

namespace habitra {

AttributeSet ObjectRegistry::Entry::changes() const {
  return isChanged() ? differences(*entity, live.get(), stored.get()) : AttributeSet();
}

bool ObjectRegistry::Entry::isChanged(AttributeSet which) const {
  if (isRemovedHere()) return false;
  for (std::uint64_t bits = which.bits(); bits != 0; bits &= bits - 1)
    if (!entity->attributes[static_cast<std::size_t>(std::countr_zero(bits))].isSame(live.get(), stored.get()))
      return true;
  return false;
}

void ObjectRegistry::Entry::rememberBegun() {
  if (begun || isNew) return;
  begun.emplace(*entity, stored.get());
  begunChecksum = checksum;
}

ObjectRegistry::Entry* ObjectRegistry::find(const EntityDescription& entity, ObjectID id) {
  Entries& known = entries(entity);
  const auto found = known.find(id);
  return found == known.end() ? nullptr : &found->second;
}

const ObjectRegistry::Entry& ObjectRegistry::entry(const EntityDescription& entity, const void* object) const {
  const auto objects = objects_.find(entity.number);
  qz::require(objects != objects_.end(), "an object of another context");
  const auto found = objects->second.entries.find(entity.objectID(const_cast<void*>(object)));
  qz::require(found != objects->second.entries.end() && found->second.live.get() == object,
              "an object of another context");
  return found->second;
}

ObjectRegistry::Entry& ObjectRegistry::entry(const EntityDescription& entity, const void* object) {
  return const_cast<Entry&>(std::as_const(*this).entry(entity, object));
}

ObjectRegistry::Entry& ObjectRegistry::adopt(const EntityTable& table, Statement& statement) {
  const ObjectID id{statement.integer(0)};
  if (Entry* known = find(table.entity(), id)) return *known;
  Entry loaded(table.entity());
  loaded.checksum = table.load(statement, loaded.live.get());
  return adopt(table.entity(), id, std::move(loaded));
}

ObjectRegistry::Entry& ObjectRegistry::adopt(const EntityDescription& entity, ObjectID id, Entry&& loaded) {
  loaded.stored.assign(loaded.live.get());
  return entries(entity).try_emplace(id, std::move(loaded)).first->second;
}

ObjectRegistry::Entry& ObjectRegistry::insert(const EntityDescription& entity, ObjectID id, const void* values) {
  Objects& objects = objects_[entity.number];
  Entry& entry = objects.entries.try_emplace(id, entity).first->second;
  entry.live.assign(values);
  entry.live.objectID() = id;
  entry.stored.objectID() = id;
  entry.isWritten = false;
  entry.isNew = true;
  objects.unwritten.push_back(&entry);
  return entry;
}

void ObjectRegistry::forgetRemoved(const EntityDescription& entity, ObjectID id) {
  const Entry* const entry = find(entity, id);
  if (entry == nullptr || (entry->isWritten && !entry->isGone)) return;
  qz::require(entry->isGone && !entry->isRemovedHere(), "a row is put back before its removal is saved");
  entries(entity).erase(id);
}

std::vector<ObjectRegistry::Entry*> ObjectRegistry::takeUnwritten(const EntityDescription& entity) {
  return std::exchange(objects_[entity.number].unwritten, {});
}

std::vector<ObjectRegistry::Entry*> ObjectRegistry::takeUnwritten() {
  std::vector<Entry*> unwritten;
  for (auto& [number, objects] : objects_)
    for (Entry* const entry : std::exchange(objects.unwritten, {})) unwritten.push_back(entry);
  return unwritten;
}

bool ObjectRegistry::hasPending() const {
  return std::ranges::any_of(objects_, [](const auto& ofEntity) {
    const Objects& objects = ofEntity.second;
    return !objects.unwritten.empty() ||
           std::ranges::any_of(objects.entries, [](const auto& item) { return item.second.isChanged(); });
  });
}

void ObjectRegistry::refresh(const TableOf& tableOf) {
  visit([&](Entry& entry) {
    if (entry.isWritten) refresh(entry, tableOf(*entry.entity));
  });
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
  for (auto& [number, objects] : objects_) {
    std::erase_if(objects.entries, [](const auto& item) { return item.second.isNew; });
    objects.unwritten.clear();
  }
  visit([](Entry& entry) {
    if (entry.begun) {
      entry.stored.assign(entry.begun->get());
      entry.checksum = entry.begunChecksum;
      entry.begun.reset();
      entry.isGone = false;
    }
    entry.live.assign(entry.stored.get());
    entry.hasConflict = false;
  });
}

void ObjectRegistry::commit() {
  for (auto& [number, objects] : objects_)
    std::erase_if(objects.entries, [](const auto& item) { return item.second.isRemovedHere(); });
  visit([](Entry& entry) {
    entry.begun.reset();
    entry.isNew = false;
    entry.hasConflict = false;
  });
}

void ObjectRegistry::forgetUnchanged() {
  for (auto& [number, objects] : objects_)
    std::erase_if(objects.entries, [](const auto& item) {
      const Entry& entry = item.second;
      return entry.isWritten && !entry.isRemovedHere() && !entry.isChanged();
    });
}

}  // namespace habitra
