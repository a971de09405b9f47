#include <HabitraCore/AutomaticTaskType/ScreenTimeSettings.h>
#include <HabitraCore/MemberCoding.h>
#include <QZKit/Trap.h>
#include <QZKit/UTF8.h>

#include <nlohmann/json.hpp>

namespace habitra {

namespace {

// The selection is kept as JSON: {"applications": [...], "categories": [...], "webDomains": [...]}, tokens sorted.

std::set<std::string> decodeTokens(const nlohmann::json& json, const char* key) {
  std::set<std::string> tokens;
  for (const nlohmann::json& token : qz::coded_form::list(json, key)) {
    if (!token.is_string()) refuseMember(key, token);
    tokens.insert(token.get<std::string>());
  }
  return tokens;
}

}  // namespace

std::optional<FamilyActivitySelection> ScreenTimeSettings::familyActivitySelection() const {
  if (!_familyActivitySelection) return std::nullopt;
  const auto json = nlohmann::json::parse(*_familyActivitySelection, nullptr, false);
  try {
    return FamilyActivitySelection{.applications = decodeTokens(json, "applications"),
                                   .categories = decodeTokens(json, "categories"),
                                   .webDomains = decodeTokens(json, "webDomains")};
  } catch (const qz::DecodingError&) {
    return std::nullopt;
  }
}

void ScreenTimeSettings::setFamilyActivitySelection(const std::optional<FamilyActivitySelection>& selection) {
  if (!selection) {
    _familyActivitySelection.reset();
    return;
  }
  for (const auto* tokens : {&selection->applications, &selection->categories, &selection->webDomains}) {
    for (const std::string& token : *tokens)
      qz::require(!qz::utf8::firstInvalidByte(token), "a token of a selection is not UTF-8");
  }
  const nlohmann::json json = {{"applications", selection->applications},
                               {"categories", selection->categories},
                               {"webDomains", selection->webDomains}};
  const std::string text = json.dump();
  _familyActivitySelection.emplace(text.begin(), text.end());
}

std::int64_t ScreenTimeSettings::numSelections() const {
  const auto selection = familyActivitySelection();
  if (!selection) return 0;
  return static_cast<std::int64_t>(selection->applications.size() + selection->categories.size() +
                                   selection->webDomains.size());
}

void to_json(nlohmann::json& json, const ScreenTimeSettings& settings) {
  json = nlohmann::json::object();
  if (settings._familyActivitySelection)
    json["_familyActivitySelection"] = qz::coded_form::base64(*settings._familyActivitySelection);
}

void from_json(const nlohmann::json& json, ScreenTimeSettings& settings) {
  const char* const key = "_familyActivitySelection";
  if (!json.is_object())
    throw qz::DecodingError("Unable to read screen-time settings from " + qz::coded_form::text(json));
  const nlohmann::json* const found = qz::coded_form::memberIfAny(json, key);
  settings._familyActivitySelection.reset();
  if (found == nullptr) return;
  settings._familyActivitySelection = qz::coded_form::bytes(*found);
  if (!settings._familyActivitySelection) refuseMember(key, *found);
}

}  // namespace habitra
