#pragma once

#include <QZKit/Clock.h>

#include <optional>
#include <string>
#include <string_view>

/// Moments as text: "2024-01-31T08:15:00Z".
///
///   date-time = date ("T" / "t" / " ") time offset
///   date      = YYYY "-" MM "-" DD
///   time      = hh ":" mm ":" ss ["." 1*DIGIT]
///   offset    = "Z" / "z" / ("+" / "-") hh ":" mm
///
/// Any date-time of RFC 3339 is read. All functions are pure and safe from any thread.
namespace qz {

/// The moment that `text` spells, and none for anything else: a day the calendar does not have, 24:00, a missing or
/// impossible offset, blanks around it. Digits of a fraction beyond the sixth are dropped. A leap second, ":60" at the
/// end of a UTC day, is the second after ":59".
[[nodiscard]] std::optional<Moment> momentFromISO8601(std::string_view text);

/// In UTC, with as many digits of the fraction as are needed: "2024-01-31T08:15:00Z", "2024-01-31T08:15:00.25Z". A year
/// outside 0–9999 has more digits or a sign, and is not read back.
[[nodiscard]] std::string iso8601(Moment date);

/// In UTC without fraction; what is left of the second is dropped towards the past.
[[nodiscard]] std::string iso8601WholeSeconds(Moment date);

}  // namespace qz
