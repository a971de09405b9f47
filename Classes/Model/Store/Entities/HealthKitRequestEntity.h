#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// The values of HealthKitRequestEntity::status.
namespace health_request_status {
inline constexpr std::string_view pending = "pending";
inline constexpr std::string_view done = "done";
inline constexpr std::string_view failed = "failed";
}  // namespace health_request_status

/// A pending or finished write of a log entry's data to the health store.
struct HealthKitRequestEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<qz::Moment> created;
  std::optional<Bytes> data;  ///< the encoded request
  std::optional<std::string> status;
  std::optional<qz::Moment> statusDate;
  std::optional<std::string> type;
  ObjectID taskLogEntry = ObjectID::none;

  friend bool operator==(const HealthKitRequestEntity&, const HealthKitRequestEntity&) = default;
};

}  // namespace habitra
