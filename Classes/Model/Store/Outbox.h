#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraModel/Store/ObjectID.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// Who is told of tasks through the outbox.
enum class OutboxLink : std::uint8_t {
  watch,       ///< the paired device
  sharedTask,  ///< the cloud, of tasks that are shared
};

/// A task that somebody has still to be told of. What there is to say is looked up when it is told, so that it is
/// never old; until then a task stands in the outbox of a link once, however often it changes, by its number, whatever
/// becomes of its identifier. A task that is removed takes its items along.
struct OutboxItem {
  ObjectID task = ObjectID::none;
  qz::Moment due;             ///< not to be told earlier
  std::int64_t revision = 0;  ///< how often the task was put there since it was last told of

  friend bool operator==(const OutboxItem&, const OutboxItem&) = default;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::OutboxLink> {
  using T = habitra::OutboxLink;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::watch, "watch", "watch"},
      {T::sharedTask, "sharedTask", "sharedTask"},
  }};
};
