#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// The catalogue of sounds a notification can make. Fronts bring the recordings, under the stored texts.
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
  taskComplete,           ///< a task is done
  taskPartiallyComplete,  ///< a part of it is done: one time of several, some of an amount
  taskMissed,             ///< it was not done in time, or what was to be avoided was done
  taskPartiallyMissed,    ///< some of what was to be avoided was done, and more is allowed
  reminder,               ///< a reminder goes off, an automatic one or one of the task's own that has no sound
  timerNotification,      ///< the time of a running timer is up, or so much of it that it reminds
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::SoundEffect> {
  using T = habitra::SoundEffect;
  static constexpr std::array<RawValueRow<T, std::string_view>, 10> rows{{
      {T::silent, "silent", "silent"},
      {T::chime, "chime", "chime"},
      {T::bell, "bell", "bell"},
      {T::softBell, "soft_bell", "softBell"},
      {T::gong, "gong", "gong"},
      {T::singingBowl, "singing_bowl", "singingBowl"},
      {T::waterDrop, "water_drop", "waterDrop"},
      {T::marimba, "marimba", "marimba"},
      {T::fanfare, "fanfare", "fanfare"},
      {T::knock, "knock", "knock"},
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

/// By what a person chooses it: "Soft bell".
[[nodiscard]] std::string_view title(SoundEffect sound);

/// What a slot plays when nobody has chosen a sound for it.
[[nodiscard]] SoundEffect defaultSound(SoundType slot);

}  // namespace habitra
