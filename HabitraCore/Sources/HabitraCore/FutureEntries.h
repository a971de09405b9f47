#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// Which entries of a log lie in the future: those for a day that has not come, by a clock that was wrong once. No walk
/// counts them, and a pass over the log takes them away.
namespace habitra {

/// What an entry says of when it was recorded.
struct EntryRecording {
  std::int32_t entryDate = 0;                       ///< the day it was made for, integer form
  std::optional<qz::Moment> createdTimestamp;       ///< when that was
  std::optional<std::string_view> createdTimeZone;  ///< identifier of the zone in which that was
};

/// Whether an entry was made on its day or later, where it was made: its creation is not after `now`, and in the zone
/// stored with it, with the task's start of day, that moment's day is not before the entry's day. Never without a
/// moment, or without a zone that is known.
[[nodiscard]] bool wasRecordedInTime(const EntryRecording& entry, const qz::HHMMSS& startOfDay, qz::Moment now);

/// Whether an entry lies in the future: its day comes after `today`, the task's day of `now`, and it was not recorded
/// in time. (Whoever flies west takes along entries of a day that has not begun at the new place.)
[[nodiscard]] bool liesInFuture(const EntryRecording& entry, const qz::YYYYMMDD& today, const qz::HHMMSS& startOfDay,
                                qz::Moment now);

}  // namespace habitra
