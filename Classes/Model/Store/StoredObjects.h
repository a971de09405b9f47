#pragma once

#include <HabitraModel/Store/StoreContext.h>

#include <vector>

namespace habitra {

/// The objects of a context for whoever knows their entity only by its description. Not for the log, whose entries are
/// no objects.
class StoredObjects {
 public:
  explicit StoredObjects(StoreContext& context) : context_(context) {}

  // As the functions of StoreContext that bear these names.
  [[nodiscard]] void* find(const EntityDescription& entity, ObjectID id) const {
    return context_.findObject(entity, id);
  }
  [[nodiscard]] std::vector<void*> fetch(const EntityDescription& entity, std::string_view attribute,
                                         std::string_view text) const {
    return context_.fetchObjects(entity, attribute, ObjectID::none, text, false);
  }
  [[nodiscard]] std::vector<void*> fetchRelated(const EntityDescription& entity, std::string_view relationship,
                                                ObjectID target) const {
    return context_.fetchObjects(entity, relationship, target, {}, false);
  }
  void* reinsert(const EntityDescription& entity, const void* values) const {
    return context_.reinsertObject(entity, values);
  }
  void remove(const EntityDescription& entity, void* object) const { context_.removeObject(entity, object); }

 private:
  StoreContext& context_;
};

}  // namespace habitra
