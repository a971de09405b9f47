#include <HabitraCore/AutomaticTaskType/QuantityCoding.h>
#include <HabitraCore/AutomaticTaskType/StoredAutomaticType.h>

#include <nlohmann/json.hpp>

namespace habitra {

namespace {

struct ExtraAndSource {
  std::optional<TypeExtra> extra;
  std::optional<DataSource> dataSource;
};

/// A choice of a thousand applications is shorter; what is longer was not written by us, and costs time to read.
constexpr std::size_t longestExtra = 65'536;

std::optional<std::vector<std::uint8_t>> encodeExtra(const AutomaticTaskType& type) {
  if (!type.extra && !type.dataSource) return std::nullopt;
  nlohmann::json json = nlohmann::json::object();
  encodeMember(json, "extra", type.extra);
  encodeMember(json, "dataSource", type.dataSource);
  const std::string text = json.dump();
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

/// The member of a type; none where it cannot be read.
template <typename T>
std::optional<T> readableMember(const nlohmann::json& json, const char* key) {
  try {
    return decodeMemberIfAny<T>(json, key);
  } catch (const qz::DecodingError&) {
    return std::nullopt;
  }
}

ExtraAndSource decodeExtra(const std::vector<std::uint8_t>& bytes) {
  if (bytes.size() > longestExtra) return {};
  const auto json = nlohmann::json::parse(bytes, nullptr, false);
  return {.extra = readableMember<TypeExtra>(json, "extra"),
          .dataSource = readableMember<DataSource>(json, "dataSource")};
}

}  // namespace

StoredAutomaticType stored(const AutomaticTaskType& type) {
  StoredAutomaticType stored{.typeName = std::string(type.type.rawValue()),
                             .typeUnit = std::nullopt,
                             .typeSpeed = std::nullopt,
                             .typeTarget = type.quantity,
                             .typeExtra = encodeExtra(type)};
  if (type.unit) stored.typeUnit = rawValue(*type.unit);
  if (!type.speeds.isEmpty()) stored.typeSpeed = type.speeds.storedText();
  return stored;
}

std::optional<AutomaticTaskType> automaticType(const StoredAutomaticType& stored) {
  const auto type = stored.typeName ? AutomaticTaskType::TaskType::fromRawValue(*stored.typeName) : std::nullopt;
  if (!type) return std::nullopt;
  const ExtraAndSource extra = stored.typeExtra ? decodeExtra(*stored.typeExtra) : ExtraAndSource{};
  return AutomaticTaskType{.type = *type,
                           .quantity = isQuantity(stored.typeTarget, *type) ? stored.typeTarget : 0.0,
                           .unit = stored.typeUnit ? fromRawValue<TypeUnit>(*stored.typeUnit) : std::nullopt,
                           .speeds = stored.typeSpeed ? TypeSpeeds::fromStoredText(*stored.typeSpeed) : TypeSpeeds{},
                           .extra = extra.extra,
                           .dataSource = extra.dataSource};
}

}  // namespace habitra
