#pragma once

#include <HabitraCore/RawValue.h>

#include <optional>
#include <string>
#include <string_view>

/// Choices that a column keeps as texts. What a later version has written is unknown here and reads as no choice; it
/// stays in its column until a person chooses something else.
namespace habitra {

template <RawValued E>
[[nodiscard]] std::optional<E> choice(const std::optional<std::string>& column) {
  return column ? fromRawValue<E>(std::string_view(*column)) : std::nullopt;
}

/// A choice that may be absent.
template <RawValued E>
void setChoice(std::optional<std::string>& column, const std::optional<E>& value) {
  if (choice<E>(column) == value) return;
  if (value)
    column = rawValue(*value);
  else
    column.reset();
}

/// A choice that must be there; `unknown` is what an unknown one reads as.
template <RawValued E>
void setRequiredChoice(std::optional<std::string>& column, E value, E unknown) {
  const bool isUnknown = column && !choice<E>(column);
  if (!isUnknown || value != unknown) column = rawValue(value);
}

}  // namespace habitra
