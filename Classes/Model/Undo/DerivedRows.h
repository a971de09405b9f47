#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/History/History.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Undo/EarlierValues.h>

#include <string_view>

/// What of the store is worked out from the rest: nobody loses anything when it goes, and it stands in nobody's way.
namespace habitra {

/// Temporal data.
[[nodiscard]] bool isDerived(EntityNumber entity);

/// Of a task: how far it was processed, and the latest amount of an automatic type. None of other entities.
[[nodiscard]] AttributeSet derivedAttributes(const EntityDescription& entity);

/// What a task's past is judged by, apart from its log.
[[nodiscard]] AttributeSet attributesOfRules();

/// Whether the days of the task are judged by the setting with this key: its pauses, and when days begin.
[[nodiscard]] bool isRuleOf(std::string_view settingKey, const TaskEntity& task);

/// What a pass fills in: automatic skips, misses and allowed misses.
[[nodiscard]] bool isDerived(const TaskLogEntryEntity& entry);

/// By what of a task the days of its log are cut and entries are recorded: its rules but for its beginning and its end.
[[nodiscard]] AttributeSet attributesOfRecording();

/// Whether a change touched nothing else, as far as is known from the values before and the row that is there now.
/// `values` are those of its transaction.
[[nodiscard]] bool isDerived(StoreContext& context, const StoredChange& change, EarlierValues& values);

}  // namespace habitra
