#pragma once

#include <QZKit/Clock.h>

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qz {

/// The identifier that a stored record keeps through export, import and mirroring: a UUID.
///
/// New ones are of version 7, so that they sort by the moment they were made; that keeps an index over them compact in
/// bulk. Within a process each new one is greater than the one before, whatever the clock does. The text form is
/// 8-4-4-4-12 hexadecimal digits in upper case; reading takes any case and any version.
///
/// A plain value of 16 bytes; ordering is that of the text form.
class UniqueID {
 public:
  using Bytes = std::array<std::uint8_t, 16>;

  /// The number of characters of the text form.
  static constexpr std::size_t textLength = 36;

  /// A new identifier of version 7 whose leading 48 bits are `now` in milliseconds since 1970. Safe from any thread.
  [[nodiscard]] static UniqueID generate(Moment now);

  /// The identifier that `text` spells; none unless it is exactly 8-4-4-4-12 hexadecimal digits.
  [[nodiscard]] static std::optional<UniqueID> fromText(std::string_view text);

  explicit constexpr UniqueID(const Bytes& bytes) : bytes_(bytes) {}

  [[nodiscard]] std::string text() const;
  [[nodiscard]] constexpr const Bytes& bytes() const { return bytes_; }

  friend bool operator==(const UniqueID&, const UniqueID&) = default;
  friend auto operator<=>(const UniqueID&, const UniqueID&) = default;

 private:
  Bytes bytes_;
};

}  // namespace qz

template <>
struct std::hash<qz::UniqueID> {
  std::size_t operator()(const qz::UniqueID& id) const noexcept;
};
