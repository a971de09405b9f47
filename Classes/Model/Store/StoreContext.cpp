#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/Files/UndoBackups.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>

#include <fmt/format.h>

namespace habitra {

StoreContext::StoreContext(std::shared_ptr<Store> store) : parts_(std::make_unique<Parts>(std::move(store))) {}

StoreContext::~StoreContext() = default;

Store& StoreContext::store() const { return parts_->unit.store(); }

void StoreContext::beginUnit() {
  try {
    parts_->beginUnit();
  } catch (...) {
    parts_->rollback();
    throw;
  }
}

bool StoreContext::isInUnit() const { return parts_->unit.isWriting(); }

bool StoreContext::hasChanges() const { return parts_->hasWritten() || parts_->registry.hasPending(); }

void StoreContext::noteUndo(std::int64_t sequence) {
  qz::require(isInUnit(), "a command is taken back outside a unit");
  parts_->undone = sequence;
}

SaveResult StoreContext::save(const SaveRequest& request) {
  if (request.undoes && request.undoes != parts_->undone) {
    rollback();
    throw StoreError(StoreError::Kind::conflict, "what was undone has not been saved, but given up; undo it again");
  }
  if (!hasChanges() && !request.undoes) {
    parts_->beginView();
    const SaveResult nothing{.sequence = parts_->unit.sequence()};
    parts_->unit.rollback();
    parts_->undone.reset();
    return nothing;
  }
  return parts_->writing([&] {
    parts_->flush();
    parts_->checkpoints.applyChanges();
    SaveResult result = std::exchange(parts_->counts, {});
    UndoBackup backup(store());
    std::optional<StoredTransaction> transaction;
    // That a command was taken back is to be known even where others had done so already.
    if (result.inserted + result.updated + result.removed > 0 || request.undoes)
      transaction = parts_->writeTransaction(request, result, backup);
    parts_->unit.commit(transaction);
    backup.keep();
    parts_->registry.commit();
    parts_->hasCheckpoints = parts_->hasRows = parts_->keepsBefore = false;
    parts_->undone.reset();
    result.sequence = parts_->unit.sequence();
    return result;
  });
}

void StoreContext::rollback() { parts_->rollback(); }

void StoreContext::flush() { parts_->flushIfNeeded(); }

void StoreContext::refresh() { parts_->unit.endView(); }

void StoreContext::forgetObjects() { parts_->registry.forgetUnchanged(); }

std::int64_t StoreContext::sequence() {
  parts_->beginView();
  return parts_->unit.sequence();
}

std::optional<qz::Moment> StoreContext::newestTransactionMoment() {
  parts_->beginView();
  return parts_->unit.newestMoment();
}

std::string StoreContext::storeIdentifier() { return parts_->unit.storeIdentifier(); }

void* StoreContext::insertObject(const EntityDescription& entity, const void* values) {
  qz::require(entity.layout == Layout::byObject, "an entry of the log is inserted as an object");
  return parts_->writing([&] {
    ObjectRegistry::Entry& entry = parts_->registry.insert(entity, parts_->unit.nextObjectID(), values);
    if (const auto position = entity.position("uniqueId")) {
      auto& uniqueId = *static_cast<std::optional<std::string>*>(entity.attributes[*position].field(entry.live.get()));
      if (!uniqueId) uniqueId = qz::UniqueID::generate(store().clock().now()).text();
    }
    return entry.live.get();
  });
}

void* StoreContext::reinsertObject(const EntityDescription& entity, const void* values) {
  qz::require(entity.layout == Layout::byObject, "an entry of the log is put back as an object");
  return parts_->writing([&] {
    const ObjectID id = entity.objectID(const_cast<void*>(values));
    parts_->registry.forgetRemoved(entity, id);
    parts_->requireFree(entity, {.objectID = id});
    return parts_->registry.insert(entity, id, values).live.get();
  });
}

void* StoreContext::findObject(const EntityDescription& entity, ObjectID id) {
  qz::require(entity.layout == Layout::byObject, "an entry of the log is fetched as an object");
  parts_->beginView();
  if (ObjectRegistry::Entry* known = parts_->registry.find(entity, id))
    return known->isGone ? nullptr : known->live.get();
  ObjectRegistry::Entry loaded(entity);
  const auto checksum = parts_->table(entity).find({.objectID = id}, loaded.live.get());
  if (!checksum) return nullptr;
  loaded.checksum = *checksum;
  return parts_->registry.adopt(entity, id, std::move(loaded)).live.get();
}

std::vector<void*> StoreContext::fetchObjects(const EntityDescription& entity, std::string_view attribute,
                                              ObjectID target, std::string_view text, bool onlyFirst) {
  qz::require(entity.layout == Layout::byObject, "entries of the log are fetched as objects");
  parts_->beginSearch(entity, {attribute});
  EntityTable& table = parts_->table(entity);
  auto rows = attribute.empty() ? table.all().use() : table.where(attribute).use();
  const std::optional<std::size_t> position = entity.position(attribute);
  if (position && entity.attributes[*position].type == StoredType::reference)
    table.bindTarget(*rows, target);
  else if (!attribute.empty())
    rows->bind(1, text);
  return parts_->objects(table, *rows, onlyFirst);
}

std::vector<void*> StoreContext::fetchObjectsBetween(const EntityDescription& entity, std::string_view relationship,
                                                     ObjectID target, std::int32_t from, std::int32_t to) {
  qz::require(entity.layout == Layout::byObject, "entries of the log are fetched as objects");
  parts_->beginSearch(entity, {relationship, entity.dayAttribute});
  EntityTable& table = parts_->table(entity);
  auto rows = table.betweenDays(relationship).use();
  table.bindDays(*rows, target, from, to);
  return parts_->objects(table, *rows, false);
}

std::vector<std::string> StoreContext::repeatedTextsOf(const EntityDescription& entity, std::string_view attribute) {
  qz::require(entity.position(attribute).has_value(), "an entity is asked for an attribute that it has not");
  parts_->beginSearch(entity, {attribute});
  Query query(parts_->unit.connection(), fmt::format("SELECT {0} FROM {1} WHERE {0} IS NOT NULL GROUP BY {0} "
                                                     "HAVING count(*) > 1 ORDER BY {0}",
                                                     attribute, entity.name));
  auto rows = query.use();
  std::vector<std::string> texts;
  while (rows->step()) texts.emplace_back(rows->text(0));
  return texts;
}

void StoreContext::removeObject(const EntityDescription& entity, void* object) {
  parts_->writing([&] {
    parts_->flushForSearch(entity, {});
    parts_->remove(parts_->registry.entry(entity, object));
  });
}

const void* StoreContext::storedValuesOf(const EntityDescription& entity, const void* object) const {
  return std::as_const(parts_->registry).entry(entity, object).stored.get();
}

AttributeSet StoreContext::changedAttributesOf(const EntityDescription& entity, const void* object) const {
  return std::as_const(parts_->registry).entry(entity, object).changes();
}

bool StoreContext::isFieldChanged(const EntityDescription& entity, const void* object, const void* field) const {
  const AttributeSet changes = changedAttributesOf(entity, object);
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (entity.attributes[i].field(const_cast<void*>(object)) == field) return changes.contains(i);
  qz::trap("a member that is no attribute", entity.name);
}

}  // namespace habitra
