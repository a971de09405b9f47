#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <HabitraCore/MemberCoding.h>

#include <nlohmann/json.hpp>

namespace habitra {

TypeSpeeds TypeSpeeds::fromStoredText(std::string_view text) {
  TypeSpeeds speeds;
  while (true) {
    const std::size_t comma = text.find(',');
    if (const auto speed = fromRawValue<TypeSpeed>(text.substr(0, comma))) speeds.insert(*speed);
    if (comma == std::string_view::npos) return speeds;
    text.remove_prefix(comma + 1);
  }
}

std::string TypeSpeeds::storedText() const {
  std::string text;
  for (const TypeSpeed speed : *this) {
    if (!text.empty()) text += ',';
    text += rawValue(speed);
  }
  return text;
}

std::vector<TypeSpeed> TypeSpeeds::sortedSleepOptions() const {
  constexpr TypeSpeeds options{TypeSpeed::sleepAsleep, TypeSpeed::sleepCore, TypeSpeed::sleepDeep, TypeSpeed::sleepREM,
                               TypeSpeed::inBed};
  const TypeSpeeds chosen = *this & options;
  return {chosen.begin(), chosen.end()};
}

void to_json(nlohmann::json& json, const TypeSpeeds& speeds) {
  json = nlohmann::json::array();
  for (const TypeSpeed speed : speeds) json.push_back(rawValue(speed));
}

void from_json(const nlohmann::json& json, TypeSpeeds& speeds) {
  TypeSpeeds read;
  decodeKnownCases<TypeSpeed>(json, [&](TypeSpeed speed) { read.insert(speed); });
  speeds = read;
}

}  // namespace habitra
