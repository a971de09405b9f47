#include <HabitraBackup/Document/DocumentEntry.h>
#include <HabitraBackup/Document/DocumentKeys.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONValues.h>

#include <array>
#include <limits>

namespace habitra {

namespace {

namespace keys = document_keys;

TaskLogEntryType entryType(const JSONFound& found) {
  using Limits = std::numeric_limits<std::int16_t>;
  const bool isNumber = found.json.is_number_integer();
  const std::int64_t number = isNumber ? found.wholeNumber(Limits::min(), Limits::max()) : 0;
  const auto type = fromRawValue<TaskLogEntryType>(static_cast<std::int16_t>(number));
  if (!isNumber || !type) found.refuse("the number of an entry type");
  return *type;
}

TaskFrequencyPeriodType periodType(const JSONFound& found) {
  const auto type = fromRawValue<TaskFrequencyPeriodType>(std::string_view(found.text()));
  if (!type) found.refuse("a kind of period (d, w, f, m or y)");
  return *type;
}

struct Member {
  std::string_view key;
  void (*set)(DocumentEntry& into, const JSONFound& found);
};

using Entry = DocumentEntry;
constexpr std::array<Member, 12> members{{
    {keys::uniqueId, [](Entry& e, const JSONFound& found) { e.entry.uniqueId = found.identifier(); }},
    {keys::entryType, [](Entry& e, const JSONFound& found) { e.entry.entryType = entryType(found); }},
    {keys::entryDate, [](Entry& e, const JSONFound& found) { e.entry.entryDate = found.day(); }},
    {keys::progress, [](Entry& e, const JSONFound& found) { e.entry.progress = found.number(); }},
    {keys::progressTotal, [](Entry& e, const JSONFound& found) { e.entry.progressTotal = found.number(); }},
    {keys::createdTimestamp, [](Entry& e, const JSONFound& found) { e.entry.createdTimestamp = found.moment(); }},
    {keys::createdTimeZone, [](Entry& e, const JSONFound& found) { e.details.createdTimeZone = found.text(); }},
    {keys::entryPeriodFrom, [](Entry& e, const JSONFound& found) { e.entry.entryPeriodFrom = found.day(); }},
    {keys::entryPeriodTo, [](Entry& e, const JSONFound& found) { e.entry.entryPeriodTo = found.day(); }},
    {keys::entryPeriodType, [](Entry& e, const JSONFound& found) { e.entry.entryPeriodType = periodType(found); }},
    {keys::cloudStatus, [](Entry& e, const JSONFound& found) { e.details.cloudStatus = found.text(); }},
    {keys::cloudStatusDate, [](Entry& e, const JSONFound& found) { e.details.cloudStatusDate = found.moment(); }},
}};

const Member* memberOf(std::string_view key) {
  for (const Member& member : members)
    if (member.key == key) return &member;
  return nullptr;
}

void requireWhole(const HabitraJSONBackupTaskEntry& entry, const JSONPlace& place) {
  const int parts = static_cast<int>(entry.entryPeriodFrom.has_value()) +
                    static_cast<int>(entry.entryPeriodTo.has_value()) +
                    static_cast<int>(entry.entryPeriodType.has_value());
  if (parts != 0 && parts != 3)
    throw HabitraJSONError(place.text(), "a period has entryPeriodFrom, entryPeriodTo and entryPeriodType, or none");
  if (parts == 3 && *entry.entryPeriodTo < *entry.entryPeriodFrom)
    throw HabitraJSONError(place.text(keys::entryPeriodTo), "the period ends before it begins");
}

}  // namespace

DocumentEntry DocumentEntry::from(const nlohmann::json& json, const JSONPlace& place, HabitraJSONRemarks& remarks) {
  DocumentEntry result;
  for (const auto& [key, value] : JSONFound{json, place}.object().items()) {
    if (const Member* member = memberOf(key)) {
      member->set(result, {value, place, key});
    } else {
      remarks.addUnknownKey(place.kind(key));
    }
  }
  for (const std::string_view needed : {keys::entryType, keys::entryDate})
    if (!json.contains(needed)) throw HabitraJSONError(place.text(needed), "missing; every entry has it");
  requireWhole(result.entry, place);
  return result;
}

}  // namespace habitra
