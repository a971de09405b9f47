#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskEntity::activeStreak>("activeStreak"),
    attribute<&TaskEntity::bestStreak>("bestStreak"),
    attribute<&TaskEntity::cloudStatus>("cloudStatus"),
    attribute<&TaskEntity::cloudStatusDate>("cloudStatusDate"),
    attribute<&TaskEntity::colorInfo>("colorInfo"),
    attribute<&TaskEntity::created>("created"),
    attribute<&TaskEntity::createdTimeZone>("createdTimeZone"),
    attribute<&TaskEntity::currentTimeZoneOverride>("currentTimeZoneOverride"),
    attribute<&TaskEntity::customReminderTime>("customReminderTime"),
    attribute<&TaskEntity::customReminderType>("customReminderType"),
    attribute<&TaskEntity::daysMode>("daysMode"),
    attribute<&TaskEntity::daysOfWeek>("daysOfWeek"),
    attribute<&TaskEntity::daysPerWeek>("daysPerWeek"),
    attribute<&TaskEntity::daysTimesPerDay>("daysTimesPerDay"),
    attribute<&TaskEntity::displayOrder>("displayOrder"),
    attribute<&TaskEntity::firstDayOfWeekValue>("firstDayOfWeekValue"),
    attribute<&TaskEntity::imageName>("imageName"),
    attribute<&TaskEntity::isNegative>("isNegative"),
    attribute<&TaskEntity::last7NumSamples>("last7NumSamples"),
    attribute<&TaskEntity::last7Pct>("last7Pct"),
    attribute<&TaskEntity::last30NumSamples>("last30NumSamples"),
    attribute<&TaskEntity::last30Pct>("last30Pct"),
    attribute<&TaskEntity::lastChangedDifficulty>("lastChangedDifficulty"),
    attribute<&TaskEntity::lastChangedDifficultyStatus>("lastChangedDifficultyStatus"),
    attribute<&TaskEntity::lastChangedDifficultyTimeZone>("lastChangedDifficultyTimeZone"),
    attribute<&TaskEntity::lastCompleted>("lastCompleted"),
    attribute<&TaskEntity::lastCompletedTime>("lastCompletedTime"),
    attribute<&TaskEntity::lastMissed>("lastMissed"),
    attribute<&TaskEntity::lastProcessedDate>("lastProcessedDate"),
    attribute<&TaskEntity::lastSkipped>("lastSkipped"),
    attribute<&TaskEntity::referenceDateValue>("referenceDateValue"),
    attribute<&TaskEntity::snoozeDate>("snoozeDate"),
    attribute<&TaskEntity::snoozeTime>("snoozeTime"),
    attribute<&TaskEntity::startOfDayValue>("startOfDayValue"),
    attribute<&TaskEntity::status>("status"),
    attribute<&TaskEntity::statusDate>("statusDate"),
    attribute<&TaskEntity::title>("title"),
    attribute<&TaskEntity::typeName>("typeName"),
    attribute<&TaskEntity::typeProgress>("typeProgress"),
    attribute<&TaskEntity::typeProgressDate>("typeProgressDate"),
    attribute<&TaskEntity::typeSpeed>("typeSpeed"),
    attribute<&TaskEntity::typeTarget>("typeTarget"),
    attribute<&TaskEntity::typeUnit>("typeUnit"),
    indexedAttribute<&TaskEntity::uniqueId>("uniqueId"),
    attribute<&TaskEntity::daysOfMonth>("daysOfMonth"),
    attribute<&TaskEntity::typeExtra>("typeExtra"),
    relationship<&TaskEntity::userProfile, UserProfileEntity>("userProfile", "task", true, DeleteRule::nullify),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<TaskEntity>(EntityNumber::task, "TaskEntity", "one habit", attributes);

}  // namespace

const EntityDescription& TaskEntity::description() { return entity; }

}  // namespace habitra
