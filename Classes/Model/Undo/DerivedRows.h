#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/History.h>
#include <HabitraModel/Store/StoreContext.h>

/// What of the store is worked out from the rest: nobody loses anything when it goes, and it stands in nobody's way.
namespace habitra {

/// Temporal data.
[[nodiscard]] bool isDerived(EntityNumber entity);

/// Of a task: how far it was processed, and the latest amount of an automatic type. None of other entities.
[[nodiscard]] AttributeSet derivedAttributes(const EntityDescription& entity);

/// What a task's past is judged by, apart from its log.
[[nodiscard]] AttributeSet attributesOfRules();

/// What a pass fills in: automatic skips, misses and allowed misses.
[[nodiscard]] bool isDerived(const TaskLogEntryEntity& entry);

/// Whether a change touched nothing else, as far as is known from the values before and the row that is there now.
[[nodiscard]] bool isDerived(StoreContext& context, const StoredChange& change);

}  // namespace habitra
