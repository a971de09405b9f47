#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace qz {

/// What a workout consists of. The raw value, under which stores and files keep it, is the name of the case. In
/// alphabetical order, `other` last.
enum class QZHKWorkoutActivityType : std::uint8_t {
  aerobics,
  archery,
  badminton,
  baseball,
  basketball,
  bowling,
  boxing,
  climbing,
  cooldown,
  coreTraining,
  cricket,
  crossTraining,
  cycling,
  dance,
  elliptical,
  fencing,
  fishing,
  football,
  golf,
  gymnastics,
  handball,
  hiking,
  hockey,
  horseRiding,
  intervalTraining,
  jumpRope,
  martialArts,
  paddling,
  pilates,
  rowing,
  rugby,
  running,
  sailing,
  skating,
  skiing,
  snowboarding,
  squash,
  stairClimbing,
  strengthTraining,
  stretching,
  surfing,
  swimming,
  tableTennis,
  taiChi,
  tennis,
  volleyball,
  walking,
  wheelchair,
  yoga,
  other,
};

template <>
struct RawValueTable<QZHKWorkoutActivityType> {
  using W = QZHKWorkoutActivityType;
  static constexpr std::array<RawValueRow<W, std::string_view>, 50> rows{{
      {W::aerobics, "aerobics", "aerobics"},
      {W::archery, "archery", "archery"},
      {W::badminton, "badminton", "badminton"},
      {W::baseball, "baseball", "baseball"},
      {W::basketball, "basketball", "basketball"},
      {W::bowling, "bowling", "bowling"},
      {W::boxing, "boxing", "boxing"},
      {W::climbing, "climbing", "climbing"},
      {W::cooldown, "cooldown", "cooldown"},
      {W::coreTraining, "coreTraining", "coreTraining"},
      {W::cricket, "cricket", "cricket"},
      {W::crossTraining, "crossTraining", "crossTraining"},
      {W::cycling, "cycling", "cycling"},
      {W::dance, "dance", "dance"},
      {W::elliptical, "elliptical", "elliptical"},
      {W::fencing, "fencing", "fencing"},
      {W::fishing, "fishing", "fishing"},
      {W::football, "football", "football"},
      {W::golf, "golf", "golf"},
      {W::gymnastics, "gymnastics", "gymnastics"},
      {W::handball, "handball", "handball"},
      {W::hiking, "hiking", "hiking"},
      {W::hockey, "hockey", "hockey"},
      {W::horseRiding, "horseRiding", "horseRiding"},
      {W::intervalTraining, "intervalTraining", "intervalTraining"},
      {W::jumpRope, "jumpRope", "jumpRope"},
      {W::martialArts, "martialArts", "martialArts"},
      {W::paddling, "paddling", "paddling"},
      {W::pilates, "pilates", "pilates"},
      {W::rowing, "rowing", "rowing"},
      {W::rugby, "rugby", "rugby"},
      {W::running, "running", "running"},
      {W::sailing, "sailing", "sailing"},
      {W::skating, "skating", "skating"},
      {W::skiing, "skiing", "skiing"},
      {W::snowboarding, "snowboarding", "snowboarding"},
      {W::squash, "squash", "squash"},
      {W::stairClimbing, "stairClimbing", "stairClimbing"},
      {W::strengthTraining, "strengthTraining", "strengthTraining"},
      {W::stretching, "stretching", "stretching"},
      {W::surfing, "surfing", "surfing"},
      {W::swimming, "swimming", "swimming"},
      {W::tableTennis, "tableTennis", "tableTennis"},
      {W::taiChi, "taiChi", "taiChi"},
      {W::tennis, "tennis", "tennis"},
      {W::volleyball, "volleyball", "volleyball"},
      {W::walking, "walking", "walking"},
      {W::wheelchair, "wheelchair", "wheelchair"},
      {W::yoga, "yoga", "yoga"},
      {W::other, "other", "other"},
  }};
};

/// The plain English title, fit to stand alone: "Strength training".
[[nodiscard]] std::string_view title(QZHKWorkoutActivityType type);

}  // namespace qz
