#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// The applications, categories and sites whose use counts, by their tokens: what the screen-time service calls them.
struct FamilyActivitySelection {
  std::set<std::string> applications;
  std::set<std::string> categories;
  std::set<std::string> webDomains;

  friend bool operator==(const FamilyActivitySelection&, const FamilyActivitySelection&) = default;
};

/// What a screen-time task watches. Coded with the key "_familyActivitySelection", whose value is base64.
struct ScreenTimeSettings {
  /// The selection as the service wrote it; nobody but the service needs to understand it.
  std::optional<std::vector<std::uint8_t>> _familyActivitySelection;

  /// The selection that the data hold; none without data, and none when they cannot be read here.
  [[nodiscard]] std::optional<FamilyActivitySelection> familyActivitySelection() const;
  /// REQUIRES: tokens are UTF-8.
  void setFamilyActivitySelection(const std::optional<FamilyActivitySelection>& selection);
  /// How many applications, categories and sites are chosen; 0 when the selection cannot be read.
  [[nodiscard]] std::int64_t numSelections() const;
  /// Whether a selection is present, readable or not.
  [[nodiscard]] bool isConfigured() const { return _familyActivitySelection.has_value(); }

  friend bool operator==(const ScreenTimeSettings&, const ScreenTimeSettings&) = default;
};

void to_json(nlohmann::json& json, const ScreenTimeSettings& settings);
/// Throws qz::DecodingError naming the key when its value is no base64.
void from_json(const nlohmann::json& json, ScreenTimeSettings& settings);

}  // namespace habitra
