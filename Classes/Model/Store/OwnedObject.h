#pragma once

#include <HabitraModel/Store/EntityDescription.h>

#include <utility>

namespace habitra {

/// An object of an entity that is known by its description only; a value.
class OwnedObject {
 public:
  explicit OwnedObject(const EntityDescription& entity) : entity_(&entity), object_(entity.create()) {}
  OwnedObject(const EntityDescription& entity, const void* values) : OwnedObject(entity) { assign(values); }
  OwnedObject(OwnedObject&& other) noexcept : entity_(other.entity_), object_(std::exchange(other.object_, nullptr)) {}
  OwnedObject& operator=(OwnedObject&&) = delete;
  ~OwnedObject() {
    if (object_ != nullptr) entity_->destroy(object_);
  }

  [[nodiscard]] void* get() const { return object_; }
  void assign(const void* from) { entity_->assign(object_, from); }
  [[nodiscard]] ObjectID& objectID() const { return entity_->objectID(object_); }

 private:
  const EntityDescription* entity_;
  void* object_;
};

}  // namespace habitra
