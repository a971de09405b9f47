#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace habitra {

/// The forms in which a backup document is written to a file. The raw value is the file name's extension, without the
/// point.
enum class HabitraBackupFormat : std::uint8_t {
  json,  ///< everything, in a form of our own
  csv,   ///< the log as one row per entry
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::HabitraBackupFormat> {
  using T = habitra::HabitraBackupFormat;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::json, "habitra", "json"},
      {T::csv, "csv", "csv"},
  }};
};

namespace habitra {

[[nodiscard]] constexpr std::string_view fileExtension(HabitraBackupFormat format) { return rawValue(format); }

/// The format of exactly this extension: "habitra" or "csv", nothing else.
[[nodiscard]] constexpr std::optional<HabitraBackupFormat> formatOfFileExtension(std::string_view extension) {
  return fromRawValue<HabitraBackupFormat>(extension);
}

/// The uniform type identifier under which desktops and phones know the format.
[[nodiscard]] constexpr std::string_view typeIdentifier(HabitraBackupFormat format) {
  return format == HabitraBackupFormat::csv ? "public.comma-separated-values-text" : "org.habitra.streak.data";
}

}  // namespace habitra
