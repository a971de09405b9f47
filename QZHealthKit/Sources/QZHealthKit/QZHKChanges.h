#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

namespace qz {

/// What came and went in a health store since a change that somebody has seen.
struct QZHKChanges {
  /// The time that something reaches over, both ends included.
  struct Reach {
    Moment earliest;
    Moment latest;

    void include(const Reach& other) {
      earliest = std::min(earliest, other.earliest);
      latest = std::max(latest, other.latest);
    }
    friend bool operator==(const Reach&, const Reach&) = default;
  };

  /// Which store that is, for its whole life; none as long as it has none, and nothing was ever saved.
  std::optional<UniqueID> store;
  /// The number of the newest change, to ask from next time; 0 where nothing was ever saved.
  std::int64_t newest = 0;
  /// Of each type that changed, from the earliest start to the latest end of the samples that came or went; for changes
  /// long ago it may be more. Of `activitySummary` what the types that rings are made of come to; a goal reaches on
  /// without end.
  std::map<QZHKObjectType, Reach> reaches;

  /// Of each type that changed, how many changes that were. Those of long ago are told apart no more, and count as one.
  std::map<QZHKObjectType, std::int64_t> numbers;

  /// Lets a type reach over this time, too.
  void include(QZHKObjectType type, const Reach& reach) {
    if (const auto [found, isNew] = reaches.try_emplace(type, reach); !isNew) found->second.include(reach);
  }

  friend bool operator==(const QZHKChanges&, const QZHKChanges&) = default;
};

}  // namespace qz
