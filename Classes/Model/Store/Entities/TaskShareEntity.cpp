#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskShareEntity::ckError>("ckError"),
    attribute<&TaskShareEntity::ckErrorUpdated>("ckErrorUpdated"),
    attribute<&TaskShareEntity::ckRecordIdRecordName>("ckRecordIdRecordName"),
    attribute<&TaskShareEntity::ckRecordIdZoneName>("ckRecordIdZoneName"),
    attribute<&TaskShareEntity::ckRecordIdZoneOwnerName>("ckRecordIdZoneOwnerName"),
    attribute<&TaskShareEntity::ckShareIdRecordName>("ckShareIdRecordName"),
    attribute<&TaskShareEntity::ckShareIdZoneName>("ckShareIdZoneName"),
    attribute<&TaskShareEntity::ckShareIdZoneOwnerName>("ckShareIdZoneOwnerName"),
    attribute<&TaskShareEntity::participantsJson>("participantsJson"),
    attribute<&TaskShareEntity::status>("status"),
    attribute<&TaskShareEntity::statusUpdated>("statusUpdated"),
    attribute<&TaskShareEntity::summaryJson>("summaryJson"),
    attribute<&TaskShareEntity::summaryJsonHashValue>("summaryJsonHashValue"),
    attribute<&TaskShareEntity::summaryJsonUpdated>("summaryJsonUpdated"),
    relationship<&TaskShareEntity::owner, TaskShareOwnerEntity>("owner", "taskShare", true, DeleteRule::nullify),
    relationship<&TaskShareEntity::task, TaskEntity>("task", "taskShare", false, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<TaskShareEntity>(EntityNumber::taskShare, "TaskShareEntity", "how one habit is shared", attributes);

}  // namespace

const EntityDescription& TaskShareEntity::description() { return entity; }

}  // namespace habitra
