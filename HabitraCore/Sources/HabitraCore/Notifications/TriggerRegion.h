#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// The places that most people have one of.
enum class RegionType : std::uint8_t { home, work, school, gym };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::RegionType> {
  using T = habitra::RegionType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 4> rows{{
      {T::home, "home", "home"},
      {T::work, "work", "work"},
      {T::school, "school", "school"},
      {T::gym, "gym", "gym"},
  }};
};

namespace habitra {

/// A place that triggers a reminder: a circle on the ground. Any finite numbers can be held and read;
/// whether there is such a place on earth, NotificationValidation.h says.
struct TriggerRegion {
  /// Metres: more than twice around the earth.
  static constexpr double longestRadius = 100'000'000;

  std::optional<RegionType> type;  ///< none: a place of the person's own
  std::optional<std::string> title;
  double latitude = 0;   ///< degrees, north positive
  double longitude = 0;  ///< degrees, east positive
  double radius = 100;   ///< metres; by default about as near as phones tell places apart
  bool notifyOnEntry = true;
  bool notifyOnExit = false;
  std::optional<std::string> icon;  ///< its name in the icon library: "ic_..."

  /// Each field as `name=value` in order, with a comma and a blank between; an absent one is "nil". The free
  /// texts, title and icon, stand in double quotes with escapes, so that none can pass for another field or line.
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const TriggerRegion&, const TriggerRegion&) = default;
};

/// Coded under the names of the fields; an absent field is an absent key.
void to_json(nlohmann::json& json, const TriggerRegion& region);
/// Throws qz::DecodingError naming the key that is missing or of the wrong kind.
void from_json(const nlohmann::json& json, TriggerRegion& region);

}  // namespace habitra
