#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// Which values a backup document can hold. The one who writes leaves others out, as those of a damaged row; the one
/// who reads refuses them. So what is written can be read.
namespace habitra::document_values {

/// The longest text, in bytes as it is written between its quotes.
inline constexpr std::size_t longestText = std::size_t{16} << 20U;

/// How deep objects and lists may lie in each other.
inline constexpr std::size_t deepest = 64;

/// The day, if the calendar has it and its year is one of 1 to 9999.
[[nodiscard]] std::optional<qz::YYYYMMDD> day(std::int64_t value);

/// Whether it can be written with a year of four digits.
[[nodiscard]] bool isWritable(qz::Moment moment);

/// Whether an attribute holds a day in its integer form, or an identifier as text; for its type alone any number or
/// text would do.
[[nodiscard]] bool isDay(const AttributeDescription& attribute);
[[nodiscard]] bool isIdentifier(const AttributeDescription& attribute);

}  // namespace habitra::document_values
