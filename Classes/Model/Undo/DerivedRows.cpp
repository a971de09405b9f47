#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Undo/DerivedRows.h>

namespace habitra {

bool isDerived(EntityNumber entity) { return entity == EntityNumber::taskTemporalData; }

AttributeSet derivedAttributes(const EntityDescription& entity) {
  AttributeSet attributes;
  if (entity.number != EntityNumber::task) return attributes;
  for (const char* name : {"lastProcessedDate", "typeProgress", "typeProgressDate"})
    attributes.insert(entity.position(name).value());
  return attributes;
}

AttributeSet attributesOfRules() {
  static const AttributeSet attributes = [] {
    AttributeSet set;
    for (const char* name :
         {"created", "createdTimeZone", "currentTimeZoneOverride", "daysMode", "daysOfMonth", "daysOfWeek",
          "daysPerWeek", "daysTimesPerDay", "firstDayOfWeekValue", "isNegative", "referenceDateValue",
          "startOfDayValue", "status", "typeExtra", "typeName", "typeSpeed", "typeTarget", "typeUnit"})
      set.insert(TaskEntity::description().position(name).value());
    return set;
  }();
  return attributes;
}

bool isRuleOf(std::string_view settingKey, const TaskEntity& task) {
  if (settingKey == settings::startOfDay.key) return task.startOfDayValue <= 0;
  return task.uniqueId && settingKey == settings::pausesOf(*task.uniqueId);
}

AttributeSet attributesOfRecording() {
  std::uint64_t bits = attributesOfRules().bits();
  for (const char* name : {"created", "createdTimeZone", "status"})
    bits &= ~(std::uint64_t{1} << TaskEntity::description().position(name).value());
  return AttributeSet(bits);
}

bool isDerived(const TaskLogEntryEntity& entry) { return isFilledIn(entry); }

bool isDerived(StoreContext& context, const StoredChange& change, EarlierValues& values) {
  if (isDerived(change.entity)) return true;
  if (change.entity == EntityNumber::task && change.kind == ChangeKind::update)
    return (change.attributes.bits() & ~derivedAttributes(TaskEntity::description()).bits()) == 0;
  if (change.entity != EntityNumber::taskLogEntry) return false;
  const auto present = context.findLogEntry(change.object);
  if (present && !isDerived(*present)) return false;
  // Of an update only the changed attributes are kept; the type among them or not.
  TaskLogEntryEntity before = present.value_or(TaskLogEntryEntity{});
  const bool isKnown = values.readIfKnown(change, TaskLogEntryEntity::description(), &before);
  return (isKnown || present) && isDerived(before);
}

}  // namespace habitra
