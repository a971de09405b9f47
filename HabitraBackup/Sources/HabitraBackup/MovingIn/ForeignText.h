#pragma once

#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The forms of values that texts of several trackers share. Pure functions, safe from any thread.
namespace habitra::foreign_text {

/// Without blanks and carriage returns at its ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// A day of the calendar as "2024-01-31", years 1 to 9999; none for anything else.
[[nodiscard]] std::optional<qz::YYYYMMDD> day(std::string_view text);

/// A whole number in decimal digits, after a minus sign or none.
[[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view text);

/// A finite number; an exponent is allowed.
[[nodiscard]] std::optional<double> number(std::string_view text);

/// `text` found, `wanted` expected: the second half of a message.
[[nodiscard]] std::string found(std::string_view text, std::string_view wanted);

/// "1.5", "3": as few digits as say it.
[[nodiscard]] std::string amount(double value);

/// "1 skip", "2 skips".
[[nodiscard]] std::string counted(std::size_t count, std::string_view one, std::string_view many);

}  // namespace habitra::foreign_text
