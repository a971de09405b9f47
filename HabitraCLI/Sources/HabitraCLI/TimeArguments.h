#pragma once

#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <functional>
#include <string_view>

/// Days, moments and zones as a person writes them on the command line. Each function throws UsageError with the text
/// that was written and what was expected.
namespace habitra {

/// 2024-01-31, 20240131, "today", "yesterday", or -2 for the day before yesterday. The calendar must have the day, in a
/// year from 1 to 9999. `today` is asked only for a day that is said by it.
[[nodiscard]] qz::YYYYMMDD dayFromArgument(std::string_view text, const std::function<qz::YYYYMMDD()>& today);

/// Any date-time of RFC 3339; without an offset it is read in `timeZone`, seconds may be left out then; a day alone is
/// its midday there. The day in `timeZone` must lie in a year from 1 to 9999.
[[nodiscard]] qz::Moment momentFromArgument(std::string_view text, const qz::TimeZone& timeZone);

/// A zone by its identifier, "Europe/Berlin".
[[nodiscard]] qz::TimeZone timeZoneFromArgument(std::string_view text);

}  // namespace habitra
