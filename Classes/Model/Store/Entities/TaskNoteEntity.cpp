#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskNoteEntity::associatedValue>("associatedValue"),
    attribute<&TaskNoteEntity::content>("content"),
    attribute<&TaskNoteEntity::createdTimestamp>("createdTimestamp"),
    attribute<&TaskNoteEntity::createdTimeZone>("createdTimeZone"),
    attribute<&TaskNoteEntity::displayOrder>("displayOrder"),
    attribute<&TaskNoteEntity::jsonExtra>("jsonExtra"),
    attribute<&TaskNoteEntity::noteDate>("noteDate"),
    attribute<&TaskNoteEntity::sentiment>("sentiment"),
    attribute<&TaskNoteEntity::status>("status"),
    indexedAttribute<&TaskNoteEntity::uniqueId>("uniqueId"),
    relationship<&TaskNoteEntity::task, TaskEntity>("task", "taskNote", true, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskNoteEntity>(EntityNumber::taskNote, "TaskNoteEntity",
                                                                    "a note on a habit", attributes, "noteDate");

}  // namespace

const EntityDescription& TaskNoteEntity::description() { return entity; }

}  // namespace habitra
