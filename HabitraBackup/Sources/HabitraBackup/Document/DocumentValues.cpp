#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraModel/Mapping/StoredDay.h>

#include <algorithm>
#include <array>

namespace habitra::document_values {

namespace {

constexpr std::array<std::string_view, 10> dayAttributes{
    "entryDate",   "entryPeriodFrom", "entryPeriodTo",      "lastCompleted", "lastMissed",
    "lastSkipped", "noteDate",        "referenceDateValue", "snoozeDate",    "typeProgressDate"};

constexpr std::array<std::string_view, 2> identifierAttributes{"entryId", "uniqueId"};

}  // namespace

std::optional<qz::YYYYMMDD> day(std::int64_t value) {
  const auto day = existingDayFromStored(value);
  return day && earliestKeptDay <= *day && *day <= latestKeptDay ? day : std::nullopt;
}

bool isWritable(qz::Moment moment) {
  using std::chrono::January;
  constexpr qz::Moment begin = std::chrono::sys_days(std::chrono::year(0) / January / 1);
  constexpr qz::Moment end = std::chrono::sys_days(std::chrono::year(10'000) / January / 1);
  return begin <= moment && moment < end;
}

bool isDay(const AttributeDescription& attribute) {
  return attribute.type != StoredType::text && std::ranges::count(dayAttributes, attribute.name) > 0;
}

bool isIdentifier(const AttributeDescription& attribute) {
  return attribute.type == StoredType::text && std::ranges::count(identifierAttributes, attribute.name) > 0;
}

}  // namespace habitra::document_values
