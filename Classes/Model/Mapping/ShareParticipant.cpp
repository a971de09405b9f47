#include <HabitraModel/Mapping/ShareParticipant.h>
#include <HabitraModel/Mapping/StoredChoice.h>
#include <HabitraModel/Mapping/StoredJSON.h>
#include <QZDateTime/CodedForm.h>

#include <algorithm>
#include <functional>
#include <utility>

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

/// Writes where the key says something else: what is not known stays while there is nothing in its place.
template <typename T, typename Read, typename Write>
void put(nlohmann::json& element, const char* key, const std::optional<T>& value, Read&& read, Write&& write) {
  if (read(text(element, key)) == value) return;
  if (value)
    element[key] = write(*value);
  else
    element.erase(key);
}

template <RawValued E>
void putChoice(nlohmann::json& element, const char* key, const std::optional<E>& value) {
  put(element, key, value, choice<E>, [](E chosen) { return rawValue(chosen); });
}

void encode(nlohmann::json& element, const ShareParticipant& participant) {
  element["identifier"] = participant.identifier;
  put(element, "name", participant.name, std::identity(), std::identity());
  putChoice(element, "role", participant.role);
  putChoice(element, "acceptance", participant.acceptance);
}

/// The list of a row; an empty one where it has none.
nlohmann::json listOf(const TaskShareEntity& share) {
  auto list = readingJSON(share.participantsJson, [](const nlohmann::json& json) { return std::optional(json); });
  return list && list->is_array() ? *std::move(list) : nlohmann::json::array();
}

}  // namespace

std::vector<ShareParticipant> participantsOf(const TaskShareEntity& share) {
  return readingJSON(share.participantsJson, [](const nlohmann::json& json) { return std::optional(decode(json)); })
      .value_or(std::vector<ShareParticipant>{});
}

void setParticipants(TaskShareEntity& share, const std::vector<ShareParticipant>& participants) {
  if (participantsOf(share) == participants) return;
  nlohmann::json old = listOf(share);
  nlohmann::json list = nlohmann::json::array();
  for (const ShareParticipant& participant : participants) {
    nlohmann::json element = nlohmann::json::object();
    const auto earlier = std::ranges::find_if(
        old, [&](const nlohmann::json& other) { return text(other, "identifier") == participant.identifier; });
    if (earlier != old.end()) {
      element = std::move(*earlier);
      old.erase(earlier);
    }
    encode(element, participant);
    list.push_back(std::move(element));
  }
  for (nlohmann::json& unknown : old)
    if (!text(unknown, "identifier")) list.push_back(std::move(unknown));
  share.participantsJson = list.empty() ? std::nullopt : std::optional(jsonBytes(list));
}

}  // namespace habitra
