#pragma once

#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/YYYYMMDD.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

/// How days are read from coded forms. For sources of this module.
namespace habitra {

/// The member `key` of an object, a day that the calendar has and a store can hold (in 32 bits). Throws
/// qz::DecodingError naming the key and the value.
[[nodiscard]] inline qz::YYYYMMDD existingDay(const nlohmann::json& json, const char* key) {
  const nlohmann::json& found = qz::coded_form::member(json, key);
  const auto number = qz::coded_form::wholeNumber(found);
  const auto day = number ? qz::YYYYMMDD::fromRawValue(*number) : std::nullopt;
  if (!day || !day->exists() || *number > std::numeric_limits<std::int32_t>::max())
    throw qz::DecodingError(std::string("Unable to read \"") + key + "\" from " + qz::coded_form::text(found));
  return *day;
}

/// The first and the last day of a span, under these keys. Throws the same where a day is missing or does not exist,
/// and where the last comes before the first.
struct DaySpan {
  qz::YYYYMMDD first;
  qz::YYYYMMDD last;
};
[[nodiscard]] inline DaySpan existingSpan(const nlohmann::json& json, const char* firstKey, const char* lastKey) {
  const DaySpan span{existingDay(json, firstKey), existingDay(json, lastKey)};
  if (span.last < span.first) {
    throw qz::DecodingError(std::string("Unable to read \"") + lastKey + "\" from " +
                            std::to_string(span.last.intValue()) + ": before \"" + firstKey + "\"");
  }
  return span;
}

}  // namespace habitra
