#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// Whose clock a time of day is read in, for a task shared between people. Where none is chosen it is the viewer's: who
/// is to be reminded at seven means seven on their own clock.
enum class NotificationTimeZone : std::uint8_t {
  taskOwner,   ///< the clock of whose task it is: all are reminded at the same moment
  taskViewer,  ///< the clock of whoever is shown the task: each is reminded at the same time of their own day
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::NotificationTimeZone> {
  using T = habitra::NotificationTimeZone;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::taskOwner, "owner", "taskOwner"},
      {T::taskViewer, "viewer", "taskViewer"},
  }};
};
