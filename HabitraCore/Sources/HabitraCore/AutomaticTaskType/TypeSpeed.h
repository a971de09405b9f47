#pragma once

#include <HabitraCore/RawValue.h>
#include <QZKit/BitIterator.h>

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// What narrows down the measurement of an automatic task: a pace, a stage of sleep, before or after a time of day,
/// above or below an amount. Stored and coded as its raw value, which is not always the name.
enum class TypeSpeed : std::uint8_t {
  walk,
  run,
  timed,
  asleepBefore,
  asleepAfter,
  awakeBefore,
  awakeAfter,
  inBedBefore,
  inBedAfter,
  outOfBedBefore,
  outOfBedAfter,
  greaterThan,
  lessThan,
  sleepAsleep,
  sleepCore,
  sleepDeep,
  sleepREM,
  inBed,
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TypeSpeed> {
  using T = habitra::TypeSpeed;
  static constexpr std::array<RawValueRow<T, std::string_view>, 18> rows{{
      {T::walk, "walk", "walk"},
      {T::run, "run", "run"},
      {T::timed, "timed", "timed"},
      {T::asleepBefore, "asleep_before", "asleepBefore"},
      {T::asleepAfter, "asleep_after", "asleepAfter"},
      {T::awakeBefore, "awake_before", "awakeBefore"},
      {T::awakeAfter, "awake_after", "awakeAfter"},
      {T::inBedBefore, "in_bed_before", "inBedBefore"},
      {T::inBedAfter, "in_bed_after", "inBedAfter"},
      {T::outOfBedBefore, "out_of_bed_before", "outOfBedBefore"},
      {T::outOfBedAfter, "out_of_bed_after", "outOfBedAfter"},
      {T::greaterThan, "greater_than", "greaterThan"},
      {T::lessThan, "less_than", "lessThan"},
      {T::sleepAsleep, "sleep", "sleepAsleep"},
      {T::sleepCore, "sleep_core", "sleepCore"},
      {T::sleepDeep, "sleep_deep", "sleepDeep"},
      {T::sleepREM, "sleep_rem", "sleepREM"},
      {T::inBed, "in_bed", "inBed"},
  }};
};

namespace habitra {

/// A set of speeds; iterates in order of declaration. Coded as the sorted list of its members.
class TypeSpeeds {
 public:
  constexpr TypeSpeeds() = default;
  constexpr TypeSpeeds(std::initializer_list<TypeSpeed> list) {
    for (const TypeSpeed speed : list) insert(speed);
  }

  /// The set that text in the stored form names: raw values with commas between them, in any order. What is unknown is
  /// no speed.
  [[nodiscard]] static TypeSpeeds fromStoredText(std::string_view text);
  /// The raw values with commas between them, in order of declaration: "walk,run".
  [[nodiscard]] std::string storedText() const;

  [[nodiscard]] constexpr bool contains(TypeSpeed speed) const { return (bits_ & bit(speed)) != 0; }
  /// Whether all of `speeds` are in this set.
  [[nodiscard]] constexpr bool contains(TypeSpeeds speeds) const { return (bits_ & speeds.bits_) == speeds.bits_; }
  [[nodiscard]] constexpr bool isEmpty() const { return bits_ == 0; }
  [[nodiscard]] constexpr std::int64_t count() const { return std::popcount(bits_); }

  constexpr void insert(TypeSpeed speed) { bits_ |= bit(speed); }
  constexpr void remove(TypeSpeed speed) { bits_ &= ~bit(speed); }

  /// What the set chooses of a night, in the order in which it is shown: asleep, the stages, in bed.
  [[nodiscard]] std::vector<TypeSpeed> sortedSleepOptions() const;

  [[nodiscard]] static constexpr TypeSpeed speed(std::int64_t bit) { return static_cast<TypeSpeed>(bit); }
  using Iterator = qz::BitIterator<TypeSpeed, &TypeSpeeds::speed>;

  [[nodiscard]] constexpr Iterator begin() const { return Iterator(bits_); }
  [[nodiscard]] constexpr Iterator end() const { return Iterator(); }

  friend constexpr TypeSpeeds operator&(TypeSpeeds a, TypeSpeeds b) {
    a.bits_ &= b.bits_;
    return a;
  }
  friend constexpr TypeSpeeds operator|(TypeSpeeds a, TypeSpeeds b) {
    a.bits_ |= b.bits_;
    return a;
  }
  friend constexpr bool operator==(const TypeSpeeds&, const TypeSpeeds&) = default;

 private:
  static constexpr std::uint32_t bit(TypeSpeed speed) { return std::uint32_t{1} << static_cast<std::uint32_t>(speed); }

  friend struct std::hash<TypeSpeeds>;
  std::uint32_t bits_ = 0;
};

void to_json(nlohmann::json& json, const TypeSpeeds& speeds);
/// Unknown texts are left out. Throws qz::DecodingError when it is no list of texts.
void from_json(const nlohmann::json& json, TypeSpeeds& speeds);

}  // namespace habitra

template <>
struct std::hash<habitra::TypeSpeeds> {
  std::size_t operator()(habitra::TypeSpeeds speeds) const noexcept { return speeds.bits_; }
};
