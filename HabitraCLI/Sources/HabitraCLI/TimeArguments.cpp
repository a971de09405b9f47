#include <HabitraCLI/TimeArguments.h>
#include <HabitraCLI/UsageError.h>
#include <QZDateTime/Calendar.h>
#include <QZDateTime/ISO8601.h>

#include <fmt/format.h>
#include <algorithm>
#include <charconv>
#include <chrono>
#include <optional>
#include <string>

namespace habitra {
namespace {

bool isNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// REQUIRES: isNumber(text), at most 18 digits.
std::int64_t number(std::string_view text) {
  std::int64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

bool isWrittenYear(std::int64_t year) { return year >= 1 && year <= 9999; }

/// The day that is spelled 2024-01-31 or 20240131, whether the calendar has it or not.
std::optional<qz::YYYYMMDD> spelledDay(std::string_view text) {
  if (text.size() == 8 && isNumber(text)) return qz::YYYYMMDD::fromRawValue(number(text));
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  const std::string_view y = text.substr(0, 4);
  const std::string_view m = text.substr(5, 2);
  const std::string_view d = text.substr(8, 2);
  if (!isNumber(y) || !isNumber(m) || !isNumber(d)) return std::nullopt;
  return qz::YYYYMMDD(number(y), number(m), number(d));
}

void requireExists(qz::YYYYMMDD day, std::string_view text) {
  if (!day.exists() || !isWrittenYear(day.y())) throw UsageError(fmt::format("the calendar has no day '{}'", text));
}

/// What a wall clock in `timeZone` shows, as a moment. The text is read as if it were UTC, then moved.
std::optional<qz::Moment> momentOnWallClock(const std::string& text, const qz::TimeZone& timeZone) {
  const std::optional<qz::Moment> inUTC = qz::momentFromISO8601(text + "Z");
  if (!inUTC) return std::nullopt;
  const qz::DateComponents shown = qz::Calendar(qz::TimeZone::utc()).components(*inUTC);
  const auto fraction = *inUTC - std::chrono::floor<std::chrono::seconds>(*inUTC);
  return qz::Calendar(timeZone).date(shown.date, shown.time) + fraction;
}

}  // namespace

qz::YYYYMMDD dayFromArgument(std::string_view text, const std::function<qz::YYYYMMDD()>& today) {
  if (text == "today") return today();
  if (text == "yesterday") return today().previousDay();
  if (text.size() >= 2 && text.size() <= 8 && text[0] == '-' && isNumber(text.substr(1))) {
    const qz::YYYYMMDD day = today().add(-number(text.substr(1)));
    if (isWrittenYear(day.y())) return day;
  } else if (const auto day = spelledDay(text)) {
    requireExists(*day, text);
    return *day;
  }
  throw UsageError(fmt::format("'{}' is no day: write 2024-01-31, 20240131, today, yesterday or -2", text));
}

qz::Moment momentFromArgument(std::string_view text, const qz::TimeZone& timeZone) {
  std::optional<qz::Moment> moment = qz::momentFromISO8601(text);
  if (!moment) moment = momentOnWallClock(std::string(text), timeZone);
  if (!moment) moment = momentOnWallClock(std::string(text) + ":00", timeZone);
  if (const auto day = spelledDay(text); !moment && day) {
    requireExists(*day, text);
    moment = day->dateAt(qz::HHMMSS::midday, timeZone);
  }
  if (!moment || !isWrittenYear(qz::Calendar(timeZone).components(*moment).date.y()))
    throw UsageError(fmt::format("'{}' is no moment: write 2024-01-31T08:15:00Z or 2024-01-31", text));
  return *moment;
}

qz::TimeZone timeZoneFromArgument(std::string_view text) {
  const std::optional<qz::TimeZone> timeZone = qz::TimeZone::fromIdentifier(text);
  if (!timeZone) throw UsageError(fmt::format("unknown time zone '{}': write it as in Europe/Berlin", text));
  return *timeZone;
}

}  // namespace habitra
