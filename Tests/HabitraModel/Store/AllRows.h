#pragma once

#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Store/OwnedObject.h>
#include <HabitraModel/Store/StoreContext.h>

#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <utility>

#include "SampleRows.h"

namespace habitra {

/// Calls `step` with the type of every entity, those that others lead to first.
template <typename Step>
void forEveryEntity(Step&& step) {
  const auto call = [&step]<typename... T>(std::type_identity<T>... types) { (step(types), ...); };
  call(std::type_identity<UserProfileEntity>{}, std::type_identity<TaskCategoryEntity>{},
       std::type_identity<TaskShareOwnerEntity>{}, std::type_identity<SettingEntity>{},
       std::type_identity<TaskEntity>{}, std::type_identity<TaskLogEntryEntity>{},
       std::type_identity<TaskTemporalDataEntity>{}, std::type_identity<TaskCounterEntity>{},
       std::type_identity<TaskNoteEntity>{}, std::type_identity<TaskTimerEntity>{},
       std::type_identity<TaskNotificationSettingsEntity>{}, std::type_identity<TaskNotificationRemindersEntity>{},
       std::type_identity<TaskShareEntity>{}, std::type_identity<HealthKitRequestEntity>{},
       std::type_identity<TaskCategoryLink>{});
}

/// The rows of a store by entity and number.
using AllRows = std::map<std::pair<EntityNumber, ObjectID>, OwnedObject>;

inline AllRows allRows(StoreContext& context) {
  AllRows rows;
  const auto add = [&rows]<typename T>(const T& row) {
    rows.try_emplace({T::description().number, row.objectID}, T::description(), &row);
  };
  forEveryEntity([&]<typename T>(std::type_identity<T>) {
    if constexpr (std::is_same_v<T, TaskLogEntryEntity>) {
      for (const TaskEntity* task : context.fetchAll<TaskEntity>())
        context.readLogEntries(task->objectID, StoreContext::firstDay, StoreContext::lastDay, add);
      context.readLogEntries(ObjectID::none, StoreContext::firstDay, StoreContext::lastDay, add);
    } else {
      for (const T* row : context.fetchAll<T>()) add(*row);
    }
  });
  return rows;
}

/// Whether two stores hold the same; the first difference is said.
inline testing::AssertionResult areSame(const AllRows& a, const AllRows& b) {
  const auto isIn = [](const AllRows& rows, const auto& item) {
    const auto found = rows.find(item.first);
    return found != rows.end() && found->second.objectID() == item.second.objectID() &&
           differences(*entityWithNumber(item.first.first), found->second.get(), item.second.get()).isEmpty();
  };
  for (const auto* side : {&a, &b})
    for (const auto& item : *side)
      if (!isIn(side == &a ? b : a, item))
        return testing::AssertionFailure() << "row " << rawValue(item.first.second) << " of "
                                           << entityWithNumber(item.first.first)->name << " is not on both sides";
  return testing::AssertionSuccess();
}

/// One row of every entity with a value in every attribute, each leading to the newest rows of the others.
inline void insertOneOfEach(StoreContext& context, std::int64_t seed, std::map<EntityNumber, ObjectID>& newest) {
  forEveryEntity([&]<typename T>(std::type_identity<T>) {
    T row = sample<T>(seed++);
    for (const AttributeDescription& attribute : T::description().attributes)
      if (attribute.type == StoredType::reference)
        *static_cast<ObjectID*>(attribute.field(&row)) = newest.at(attribute.relationship.target().number);
    if constexpr (std::is_same_v<T, TaskLogEntryEntity>)
      newest[T::description().number] = context.insertLogEntry(row);
    else
      newest[T::description().number] = context.insert(row).objectID;
  });
}

}  // namespace habitra
