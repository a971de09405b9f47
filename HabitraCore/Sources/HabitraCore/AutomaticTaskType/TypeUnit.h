#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskProgress.h>
#include <QZHealthKit/QZHKUnit.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace habitra {

/// The unit in which an automatic task's target is given. Stored and coded as its raw value. Used like an enumeration
/// (`TypeUnit::litres`, `switch (unit)`). What a unit is called on a screen is a matter of language (TitleTexts.h).
class TypeUnit {
 public:
  enum class Case : std::uint8_t {
    distanceKm,
    distanceMeters,
    distanceMiles,
    distanceYards,
    steps,
    pushes,
    drinks,
    fluidOuncesUS,
    litres,
    millilitres,
    cupsUS,
    calories,
    kilojoules,
    durationSeconds,
    durationMinutes,
    durationHours,
    flights,
    milligrams,
    micrograms,
    grams,
    timeOfDay,
  };
  using enum Case;

  /// What a unit measures. Amounts convert within a dimension and never between two: a step is no drink.
  enum class Dimension : std::uint8_t {
    distance,
    steps,
    pushes,
    drinks,
    volume,
    energy,
    duration,
    flights,
    mass,
    timeOfDay,
  };

  /// Not explicit, so that `TypeUnit::litres` is a TypeUnit wherever one is wanted.
  constexpr TypeUnit(Case value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  /// Lets `switch` and the comparison operators see the case.
  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor)

  [[nodiscard]] Dimension dimension() const;
  /// The unit in which the health store counts it; of a time of day, seconds since midnight. Its factor() to the base
  /// unit of the dimension is exact.
  [[nodiscard]] qz::QZHKUnit healthKit() const;
  /// A sign for it where there is no room for words: "km", "kcal", "fl oz". A time of day has none.
  [[nodiscard]] std::string_view symbol() const;
  /// How many decimals of an amount are shown at most.
  [[nodiscard]] std::int64_t decimals() const;

  [[nodiscard]] bool isDistance() const { return dimension() == Dimension::distance; }
  [[nodiscard]] bool isEnergy() const { return dimension() == Dimension::energy; }
  [[nodiscard]] bool isDuration() const { return dimension() == Dimension::duration; }
  /// Whether amounts of it add up, so that a target can be reached by parts: all but a time of day.
  [[nodiscard]] bool isQuantifiable() const { return dimension() != Dimension::timeOfDay; }
  /// Whether it counts things, of which a target asks for whole ones: steps, pushes, drinks, flights.
  [[nodiscard]] bool isCounted() const { return isQuantifiable() && healthKit() == qz::QZHKUnit::count; }

  /// The same amount in another unit, by exact factors; none when the two measure different things.
  [[nodiscard]] std::optional<double> convert(double quantity, TypeUnit to) const;

  /// A duration in this unit as seconds; in any other unit than minutes and hours the value is unchanged.
  [[nodiscard]] double convertToTimeInterval(double value) const;
  /// Its inverse: seconds as a duration in this unit.
  [[nodiscard]] double convertFromTimeInterval(double duration) const;

  /// In which unit a timer of such a task shows its durations; minutes unless this is seconds or hours.
  [[nodiscard]] TaskProgressTimer::Unit timerUnit() const;

 private:
  Case value_;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TypeUnit> {
  using T = habitra::TypeUnit;
  static constexpr std::array<RawValueRow<T, std::string_view>, 21> rows{{
      {T::distanceKm, "km", "distanceKm"},
      {T::distanceMeters, "m", "distanceMeters"},
      {T::distanceMiles, "miles", "distanceMiles"},
      {T::distanceYards, "yd", "distanceYards"},
      {T::steps, "steps", "steps"},
      {T::pushes, "pushes", "pushes"},
      {T::drinks, "drinks", "drinks"},
      {T::fluidOuncesUS, "floz_us", "fluidOuncesUS"},
      {T::litres, "litres", "litres"},
      {T::millilitres, "mls", "millilitres"},
      {T::cupsUS, "cups_us", "cupsUS"},
      {T::calories, "kcal", "calories"},
      {T::kilojoules, "kj", "kilojoules"},
      {T::durationSeconds, "seconds", "durationSeconds"},
      {T::durationMinutes, "minutes", "durationMinutes"},
      {T::durationHours, "hours", "durationHours"},
      {T::flights, "flights", "flights"},
      {T::milligrams, "milligrams", "milligrams"},
      {T::micrograms, "micrograms", "micrograms"},
      {T::grams, "grams", "grams"},
      {T::timeOfDay, "timeOfDay", "timeOfDay"},
  }};
};

template <>
struct std::hash<habitra::TypeUnit> {
  std::size_t operator()(habitra::TypeUnit unit) const noexcept {
    return static_cast<std::size_t>(static_cast<habitra::TypeUnit::Case>(unit));
  }
};
