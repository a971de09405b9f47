#include <HabitraApp/HabitSummary.h>
#include <HabitraCore/RawValue.h>

#include <nlohmann/json.hpp>
#include <string_view>

namespace habitra {
namespace {

template <typename T>
void putIfPresent(nlohmann::json& json, std::string_view key, const std::optional<T>& value) {
  if (value) json[std::string(key)] = *value;
}

}  // namespace

void to_json(nlohmann::json& json, const HabitSummary& habit) {
  json = nlohmann::json{{"uniqueId", habit.uniqueId.text()}, {"title", habit.title}, {"page", habit.page},
                        {"isNegative", habit.isNegative},    {"due", habit.due},     {"streak", habit.streak}};
  if (habit.period)
    json["period"] = {{"type", rawValue(habit.period->periodType)},
                      {"from", habit.period->startDate},
                      {"to", habit.period->finishDate}};
  putIfPresent(json, "frequency", habit.frequency);
  putIfPresent(json, "status", habit.status);
  putIfPresent(json, "lastCompleted", habit.lastCompleted);
  putIfPresent(json, "lastMissed", habit.lastMissed);
  putIfPresent(json, "lastSkipped", habit.lastSkipped);
}

}  // namespace habitra
