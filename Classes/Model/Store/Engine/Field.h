#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>
#include <type_traits>

namespace habitra {

/// Calls `visit` with a reference to the member that holds an attribute, in its own type.
template <typename Visitor>
decltype(auto) visitField(const AttributeDescription& attribute, void* object, Visitor&& visit) {
  void* field = attribute.field(object);
  const auto as = [field]<typename T>(std::type_identity<T>) -> T& { return *static_cast<T*>(field); };
  switch (attribute.type) {
    case StoredType::boolean:
      return attribute.isOptional ? visit(as(std::type_identity<std::optional<bool>>{}))
                                  : visit(as(std::type_identity<bool>{}));
    case StoredType::int16:
      return attribute.isOptional ? visit(as(std::type_identity<std::optional<std::int16_t>>{}))
                                  : visit(as(std::type_identity<std::int16_t>{}));
    case StoredType::int32:
      return attribute.isOptional ? visit(as(std::type_identity<std::optional<std::int32_t>>{}))
                                  : visit(as(std::type_identity<std::int32_t>{}));
    case StoredType::real:
      return attribute.isOptional ? visit(as(std::type_identity<std::optional<double>>{}))
                                  : visit(as(std::type_identity<double>{}));
    case StoredType::text: return visit(as(std::type_identity<std::optional<std::string>>{}));
    case StoredType::bytes: return visit(as(std::type_identity<std::optional<Bytes>>{}));
    case StoredType::moment: return visit(as(std::type_identity<std::optional<qz::Moment>>{}));
    case StoredType::reference: return visit(as(std::type_identity<ObjectID>{}));
    case StoredType::int64: break;
  }
  return attribute.isOptional ? visit(as(std::type_identity<std::optional<std::int64_t>>{}))
                              : visit(as(std::type_identity<std::int64_t>{}));
}

/// The same for reading.
template <typename Visitor>
decltype(auto) visitField(const AttributeDescription& attribute, const void* object, Visitor&& visit) {
  return visitField(attribute, const_cast<void*>(object), [&visit](const auto& value) { return visit(value); });
}

template <typename T>
inline constexpr bool isOptionalField = false;
template <typename T>
inline constexpr bool isOptionalField<std::optional<T>> = true;

/// Whether a member is at its default: none where that exists, else zero.
template <typename T>
[[nodiscard]] bool isAtDefault(const T& value) {
  if constexpr (isOptionalField<T>)
    return !value.has_value();
  else
    return value == T{};
}

template <typename T>
void setToDefault(T& value) {
  if constexpr (isOptionalField<T>)
    value.reset();
  else
    value = T{};
}

}  // namespace habitra
