#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// The catalogue of sounds a notification can make. Fronts bring the recordings, under the stored texts. The name in
/// the table is the title by which a person chooses: "Soft bell".
enum class SoundEffect : std::uint8_t {
  silent,
  chime,
  bell,
  softBell,
  gong,
  singingBowl,
  waterDrop,
  marimba,
  fanfare,
  knock,
};

/// Which slot a sound fills: what has happened when it is heard.
enum class SoundType : std::uint8_t {
  taskComplete,
  taskPartiallyComplete,
  taskMissed,
  taskPartiallyMissed,
  reminder,
  timerNotification,
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::SoundEffect> {
  using T = habitra::SoundEffect;
  static constexpr std::array<RawValueRow<T, std::string_view>, 10> rows{{
      {T::silent, "silent", "Silent"},
      {T::chime, "chime", "Chime"},
      {T::bell, "bell", "Bell"},
      {T::softBell, "soft_bell", "Soft bell"},
      {T::gong, "gong", "Gong"},
      {T::singingBowl, "singing_bowl", "Singing bowl"},
      {T::waterDrop, "water_drop", "Water drop"},
      {T::marimba, "marimba", "Marimba"},
      {T::fanfare, "fanfare", "Fanfare"},
      {T::knock, "knock", "Knock"},
  }};
};

template <>
struct qz::RawValueTable<habitra::SoundType> {
  using T = habitra::SoundType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 6> rows{{
      {T::taskComplete, "taskComplete", "taskComplete"},
      {T::taskPartiallyComplete, "taskPartiallyComplete", "taskPartiallyComplete"},
      {T::taskMissed, "taskMissed", "taskMissed"},
      {T::taskPartiallyMissed, "taskPartiallyMissed", "taskPartiallyMissed"},
      {T::reminder, "reminder", "reminder"},
      {T::timerNotification, "timerNotification", "timerNotification"},
  }};
};

namespace habitra {

/// What a slot plays when nobody has chosen a sound for it.
[[nodiscard]] SoundEffect defaultSound(SoundType slot);

}  // namespace habitra
