#include <HabitraModel/Tasks/Recording/TaskModifyContext.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace habitra {

namespace {

std::optional<TaskModifyContext> contextOf(const nlohmann::json& json) {
  if (!json.is_object() || json.size() != 1) return std::nullopt;
  const auto member = json.begin();
  if (!member->is_object() || !member->empty()) return std::nullopt;
  return fromCaseName<TaskModifyContext>(member.key());
}

}  // namespace

void to_json(nlohmann::json& json, TaskModifyContext context) {
  json = {{std::string(caseName(context)), nlohmann::json::object()}};
}

void from_json(const nlohmann::json& json, TaskModifyContext& context) {
  const auto found = contextOf(json);
  if (!found) throw qz::DecodingError("Unable to create TaskModifyContext from " + qz::coded_form::text(json));
  context = *found;
}

}  // namespace habitra
