#pragma once

#include <HabitraModel/Store/Engine/RowCoding.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

/// Rows that say the same. For the deduplicator.
namespace habitra {

/// What does not make a row another: its identifier, which is asked about, and its state towards the cloud.
inline constexpr std::array<std::string_view, 3> besideContent{"uniqueId", "cloudStatus", "cloudStatusDate"};

/// Whether two rows differ in nothing but these attributes.
template <typename T>
[[nodiscard]] bool areAlike(const T& a, const T& b, std::span<const std::string_view> ignored = besideContent) {
  const EntityDescription& entity = T::description();
  const AttributeSet different = differences(entity, &a, &b);
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (different.contains(i) && std::ranges::find(ignored, entity.attributes[i].name) == ignored.end()) return false;
  return true;
}

}  // namespace habitra
