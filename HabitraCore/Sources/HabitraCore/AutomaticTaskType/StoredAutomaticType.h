#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// An automatic type in the form in which a task's record keeps it: three texts, a number and bytes.
struct StoredAutomaticType {
  std::optional<std::string> typeName;  ///< raw value of the type; none or empty for a task completed by hand
  std::optional<std::string> typeUnit;  ///< raw value of the unit
  std::optional<std::string>
      typeSpeed;            ///< raw values of the speeds, with commas between them, in order of declaration
  double typeTarget = 0.0;  ///< the quantity
  /// The extra and the data source as JSON with the keys "extra" and "dataSource"; none where there is neither.
  std::optional<std::vector<std::uint8_t>> typeExtra;

  friend bool operator==(const StoredAutomaticType&, const StoredAutomaticType&) = default;
};

[[nodiscard]] StoredAutomaticType stored(const AutomaticTaskType& type);
/// The type that a record keeps; none for a task completed by hand and for a type that is not known. What is not known
/// of the rest, or cannot be read, is no value, each by itself: unit, speeds, extra, data source. A target that cannot
/// be one (not finite, too great, below 0 where there is nothing below) is 0.
[[nodiscard]] std::optional<AutomaticTaskType> automaticType(const StoredAutomaticType& stored);

}  // namespace habitra
