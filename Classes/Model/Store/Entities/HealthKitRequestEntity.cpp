#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&HealthKitRequestEntity::created>("created"),
    attribute<&HealthKitRequestEntity::data>("data"),
    indexedAttribute<&HealthKitRequestEntity::status>("status", health_request_status::pending),
    attribute<&HealthKitRequestEntity::statusDate>("statusDate"),
    attribute<&HealthKitRequestEntity::type>("type"),
    relationship<&HealthKitRequestEntity::taskLogEntry, TaskLogEntryEntity>("taskLogEntry", "healthKitRequests", true,
                                                                            DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<HealthKitRequestEntity>(EntityNumber::healthKitRequest, "HealthKitRequestEntity",
                                           "a pending or finished write of an entry to the health store", attributes);

}  // namespace

const EntityDescription& HealthKitRequestEntity::description() { return entity; }

}  // namespace habitra
