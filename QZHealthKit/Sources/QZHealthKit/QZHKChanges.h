#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

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
  /// What lies no further apart than this is one reach: less than a day, however short the clocks make it, so that no
  /// whole day lies between two samples of a reach.
  static constexpr std::chrono::hours nearness{22};

  /// Of each type that changed, the times over which samples that came or went reach, in order. Of `activitySummary`
  /// what the types that rings are made of come to.
  std::map<QZHKObjectType, std::vector<Reach>> reaches;
  /// Likewise, where only the whole is known, and much of it may be as it was: of changes of long ago, which are told
  /// apart no more, and of rings by their goals, each of which reaches on without end.
  std::map<QZHKObjectType, Reach> vagueReaches;

  /// Of each type that changed, how many changes that were. Those of long ago are told apart no more, and count as one.
  std::map<QZHKObjectType, std::int64_t> numbers;

  /// Lets a type reach over this time, too.
  void include(QZHKObjectType type, const Reach& reach) {
    std::vector<Reach>& all = reaches[type];
    const auto first =
        std::ranges::partition_point(all, [&](const Reach& one) { return one.latest + nearness < reach.earliest; });
    const auto last = std::partition_point(first, all.end(),
                                           [&](const Reach& one) { return one.earliest <= reach.latest + nearness; });
    if (first == last) {
      all.insert(first, reach);
      return;
    }
    first->include(reach);
    first->include(*(last - 1));
    all.erase(first + 1, last);
  }
  void includeVaguely(QZHKObjectType type, const Reach& reach) {
    if (const auto [found, isNew] = vagueReaches.try_emplace(type, reach); !isNew) found->second.include(reach);
  }

  friend bool operator==(const QZHKChanges&, const QZHKChanges&) = default;
};

}  // namespace qz
