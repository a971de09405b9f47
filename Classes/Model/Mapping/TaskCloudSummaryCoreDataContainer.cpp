#include <HabitraModel/Mapping/StoredJSON.h>
#include <HabitraModel/Mapping/TaskCloudSummaryCoreDataContainer.h>
#include <QZDateTime/CodedForm.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace habitra {

namespace {

namespace coded_form = qz::coded_form;

void encodeText(nlohmann::json& json, const char* key, const std::optional<std::string>& text) {
  if (text) json[key] = *text;
}

std::optional<std::string> decodeText(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const found = coded_form::memberIfAny(json, key);
  if (found == nullptr) return std::nullopt;
  if (!found->is_string()) throw qz::DecodingError(std::string("Unable to read \"") + key + "\"");
  return found->get<std::string>();
}

nlohmann::json encode(const TaskCloudSummary& summary) {
  nlohmann::json json{{"uniqueId", summary.uniqueId.text()},
                      {"isNegative", summary.isNegative},
                      {"activeStreak", summary.activeStreak},
                      {"bestStreak", summary.bestStreak}};
  encodeText(json, "title", summary.title);
  encodeText(json, "imageName", summary.imageName);
  encodeText(json, "colorInfo", summary.colorInfo);
  encodeText(json, "todayStatus", summary.todayStatus);
  if (summary.frequency) json["frequency"] = *summary.frequency;
  return json;
}

TaskCloudSummary decode(const nlohmann::json& json) {
  const auto id = qz::UniqueID::fromText(decodeText(json, "uniqueId").value_or(""));
  if (!id) throw qz::DecodingError("Unable to read \"uniqueId\"");
  TaskCloudSummary summary{.uniqueId = *id};
  summary.title = decodeText(json, "title");
  summary.imageName = decodeText(json, "imageName");
  summary.colorInfo = decodeText(json, "colorInfo");
  const nlohmann::json& isNegative = coded_form::member(json, "isNegative");
  if (!isNegative.is_boolean()) throw qz::DecodingError("Unable to read \"isNegative\"");
  summary.isNegative = isNegative.get<bool>();
  if (const auto* frequency = coded_form::memberIfAny(json, "frequency"))
    summary.frequency = frequency->get<TaskFrequency>();
  summary.activeStreak = coded_form::wholeNumber(json, "activeStreak");
  summary.bestStreak = coded_form::wholeNumber(json, "bestStreak");
  summary.todayStatus = decodeText(json, "todayStatus");
  summary.updated = qz::Moment(std::chrono::microseconds(coded_form::wholeNumber(json, "updated")));
  return summary;
}

}  // namespace

Bytes TaskCloudSummaryCoreDataContainer::coded() const {
  nlohmann::json json = encode(summary);
  json["updated"] = std::int64_t{summary.updated.time_since_epoch().count()};
  return jsonBytes({{"version", currentVersion}, {"summary", std::move(json)}});
}

std::optional<TaskCloudSummaryCoreDataContainer> TaskCloudSummaryCoreDataContainer::fromCoded(
    const std::optional<Bytes>& bytes) {
  return readingJSON(bytes, [](const nlohmann::json& json) -> std::optional<TaskCloudSummaryCoreDataContainer> {
    if (coded_form::wholeNumber(json, "version") != currentVersion) return std::nullopt;
    return TaskCloudSummaryCoreDataContainer{decode(coded_form::member(json, "summary"))};
  });
}

std::int64_t TaskCloudSummaryCoreDataContainer::hashValue() const {
  const Bytes bytes = jsonBytes(encode(summary));
  return static_cast<std::int64_t>(XXH3_64bits(bytes.data(), bytes.size()));
}

std::optional<TaskCloudSummary> summaryOf(const TaskShareEntity& share) {
  const auto container = TaskCloudSummaryCoreDataContainer::fromCoded(share.summaryJson);
  return container ? std::optional(container->summary) : std::nullopt;
}

bool setSummary(TaskShareEntity& share, const TaskCloudSummary& summary) {
  const TaskCloudSummaryCoreDataContainer container{summary};
  const std::int64_t hash = container.hashValue();
  if (share.summaryJsonHashValue == hash && summaryOf(share)) return false;
  share.summaryJson = container.coded();
  share.summaryJsonHashValue = hash;
  share.summaryJsonUpdated = summary.updated;
  return true;
}

}  // namespace habitra
