#pragma once

#include <compare>
#include <cstdint>
#include <optional>

namespace habitra {

/// The number of the page that a task stands on, from 1. A page is a profile of the store; its number is the profile's
/// display order, a signed 16-bit integer from 0, plus one.
class TaskPageNumber {
 public:
  static constexpr std::int64_t largest = 32768;

  /// None outside 1 to `largest`.
  [[nodiscard]] static constexpr std::optional<TaskPageNumber> fromRawValue(std::int64_t number) {
    if (number < 1 || number > largest) return std::nullopt;
    return TaskPageNumber(static_cast<std::int16_t>(number - 1));
  }
  /// The page of the profile with this display order; none for a negative one.
  [[nodiscard]] static constexpr std::optional<TaskPageNumber> ofDisplayOrder(std::int16_t displayOrder) {
    return fromRawValue(std::int64_t{displayOrder} + 1);
  }
  /// Where a task stands that was put on no page.
  [[nodiscard]] static constexpr TaskPageNumber first() { return TaskPageNumber(0); }

  [[nodiscard]] constexpr std::int64_t rawValue() const { return std::int64_t{displayOrder_} + 1; }
  [[nodiscard]] constexpr std::int16_t displayOrder() const { return displayOrder_; }

  friend bool operator==(TaskPageNumber, TaskPageNumber) = default;
  friend auto operator<=>(TaskPageNumber, TaskPageNumber) = default;

 private:
  explicit constexpr TaskPageNumber(std::int16_t displayOrder) : displayOrder_(displayOrder) {}

  std::int16_t displayOrder_;
};

}  // namespace habitra
