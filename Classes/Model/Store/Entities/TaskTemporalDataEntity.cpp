#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskTemporalDataEntity::activeStreak>("activeStreak"),
    attribute<&TaskTemporalDataEntity::bestStreak>("bestStreak"),
    attribute<&TaskTemporalDataEntity::lastChangedDifficulty>("lastChangedDifficulty"),
    attribute<&TaskTemporalDataEntity::lastChangedDifficultyStatus>("lastChangedDifficultyStatus"),
    attribute<&TaskTemporalDataEntity::lastChangedDifficultyTimeZone>("lastChangedDifficultyTimeZone"),
    attribute<&TaskTemporalDataEntity::lastCompleted>("lastCompleted"),
    attribute<&TaskTemporalDataEntity::lastMissed>("lastMissed"),
    attribute<&TaskTemporalDataEntity::lastSkipped>("lastSkipped"),
    attribute<&TaskTemporalDataEntity::lastUpdated>("lastUpdated"),
    attribute<&TaskTemporalDataEntity::progress>("progress"),
    attribute<&TaskTemporalDataEntity::progressDate>("progressDate"),
    attribute<&TaskTemporalDataEntity::recentLongTermNumSamples>("recentLongTermNumSamples"),
    attribute<&TaskTemporalDataEntity::recentLongTermPct>("recentLongTermPct"),
    attribute<&TaskTemporalDataEntity::recentShortTermNumSamples>("recentShortTermNumSamples"),
    attribute<&TaskTemporalDataEntity::recentShortTermPct>("recentShortTermPct"),
    relationship<&TaskTemporalDataEntity::task, TaskEntity>("task", "taskTemporalData", false, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskTemporalDataEntity>(
    EntityNumber::taskTemporalData, "TaskTemporalDataEntity", "the derived figures of a habit", attributes);

}  // namespace

const EntityDescription& TaskTemporalDataEntity::description() { return entity; }

}  // namespace habitra
