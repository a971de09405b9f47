#include <HabitraModel/Mapping/ShareParticipant.h>
#include <HabitraModel/Mapping/StoredChoice.h>
#include <HabitraModel/Mapping/StoredJSON.h>
#include <QZDateTime/CodedForm.h>

namespace habitra {

namespace {

std::optional<std::string> text(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const found = qz::coded_form::memberIfAny(json, key);
  return found != nullptr && found->is_string() ? std::optional(found->get<std::string>()) : std::nullopt;
}

std::vector<ShareParticipant> decode(const nlohmann::json& json) {
  std::vector<ShareParticipant> participants;
  if (!json.is_array()) return participants;
  for (const nlohmann::json& element : json)
    if (auto identifier = text(element, "identifier"))
      participants.push_back({.identifier = *std::move(identifier),
                              .name = text(element, "name"),
                              .role = choice<ShareParticipant::Role>(text(element, "role")),
                              .acceptance = choice<ShareParticipant::Acceptance>(text(element, "acceptance"))});
  return participants;
}

nlohmann::json encode(const ShareParticipant& participant) {
  nlohmann::json json{{"identifier", participant.identifier}};
  if (participant.name) json["name"] = *participant.name;
  if (participant.role) json["role"] = rawValue(*participant.role);
  if (participant.acceptance) json["acceptance"] = rawValue(*participant.acceptance);
  return json;
}

}  // namespace

std::vector<ShareParticipant> participantsOf(const TaskShareEntity& share) {
  return readingJSON(share.participantsJson, [](const nlohmann::json& json) { return std::optional(decode(json)); })
      .value_or(std::vector<ShareParticipant>{});
}

void setParticipants(TaskShareEntity& share, const std::vector<ShareParticipant>& participants) {
  if (participantsOf(share) == participants) return;
  share.participantsJson.reset();
  if (participants.empty()) return;
  nlohmann::json list = nlohmann::json::array();
  for (const ShareParticipant& participant : participants) list.push_back(encode(participant));
  share.participantsJson = jsonBytes(list);
}

}  // namespace habitra
