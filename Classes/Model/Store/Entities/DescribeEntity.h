#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <string>
#include <type_traits>

/// How an entity's source file writes its description: one row per attribute, made from a pointer to the member.
namespace habitra {

namespace describe {

template <typename T>
struct Unwrapped {
  using Type = T;
  static constexpr bool isOptional = false;
};
template <typename T>
struct Unwrapped<std::optional<T>> {
  using Type = T;
  static constexpr bool isOptional = true;
};

template <typename T>
constexpr StoredType storedType() {
  if constexpr (std::is_same_v<T, bool>) return StoredType::boolean;
  if constexpr (std::is_same_v<T, std::int16_t>) return StoredType::int16;
  if constexpr (std::is_same_v<T, std::int32_t>) return StoredType::int32;
  if constexpr (std::is_same_v<T, std::int64_t>) return StoredType::int64;
  if constexpr (std::is_same_v<T, double>) return StoredType::real;
  if constexpr (std::is_same_v<T, std::string>) return StoredType::text;
  if constexpr (std::is_same_v<T, Bytes>) return StoredType::bytes;
  if constexpr (std::is_same_v<T, qz::Moment>) return StoredType::moment;
  if constexpr (std::is_same_v<T, ObjectID>) return StoredType::reference;
}

template <auto Member>
struct MemberOf;
template <typename Object, typename Field, Field Object::*Member>
struct MemberOf<Member> {
  using FieldType = Field;
  static void* field(void* object) { return &(static_cast<Object*>(object)->*Member); }
  static bool isSame(const void* object, const void* other) {
    return static_cast<const Object*>(object)->*Member == static_cast<const Object*>(other)->*Member;
  }
};

}  // namespace describe

template <auto Member>
constexpr AttributeDescription attribute(std::string_view name) {
  using Unwrapped = describe::Unwrapped<typename describe::MemberOf<Member>::FieldType>;
  return {name,
          describe::storedType<typename Unwrapped::Type>(),
          Unwrapped::isOptional,
          false,
          &describe::MemberOf<Member>::field,
          &describe::MemberOf<Member>::isSame,
          {}};
}

/// An attribute that rows are looked up by.
template <auto Member>
constexpr AttributeDescription indexedAttribute(std::string_view name) {
  AttributeDescription description = attribute<Member>(name);
  description.isIndexed = true;
  return description;
}

/// A text by which only the rows with one value are looked up, few among many.
template <auto Member>
constexpr AttributeDescription indexedAttribute(std::string_view name, std::string_view indexedText) {
  AttributeDescription description = indexedAttribute<Member>(name);
  description.indexedText = indexedText;
  return description;
}

/// A to-one relationship to `Target`, which knows this side as `inverse`.
template <auto Member, typename Target>
constexpr AttributeDescription relationship(std::string_view name, std::string_view inverse, bool inverseIsToMany,
                                            DeleteRule whenTargetIsRemoved) {
  AttributeDescription description = indexedAttribute<Member>(name);
  description.relationship = {&Target::description, inverse, inverseIsToMany, whenTargetIsRemoved};
  return description;
}

/// `dayAttribute`: the attribute that holds the day of a row, where its entity has one.
template <typename Object>
constexpr EntityDescription describeEntity(EntityNumber number, std::string_view name, std::string_view summary,
                                           std::span<const AttributeDescription> attributes,
                                           std::string_view dayAttribute = {}, Layout layout = Layout::byObject) {
  EntityDescription description{number, name, summary, attributes, dayAttribute, layout};
  description.create = []() -> void* { return new Object; };
  description.destroy = [](void* object) { delete static_cast<Object*>(object); };
  description.assign = [](void* object, const void* from) {
    *static_cast<Object*>(object) = *static_cast<const Object*>(from);
  };
  description.isSame = [](const void* object, const void* other) {
    return *static_cast<const Object*>(object) == *static_cast<const Object*>(other);
  };
  description.objectID = [](void* object) -> ObjectID& { return static_cast<Object*>(object)->objectID; };
  return description;
}

}  // namespace habitra
