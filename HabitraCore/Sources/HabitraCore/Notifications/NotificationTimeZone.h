#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// Whose clock a time of day is read in, for a task shared between people.
enum class NotificationTimeZone : std::uint8_t { taskOwner, taskViewer };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::NotificationTimeZone> {
  using T = habitra::NotificationTimeZone;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::taskOwner, "owner", "taskOwner"},
      {T::taskViewer, "viewer", "taskViewer"},
  }};
};
