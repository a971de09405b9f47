#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace habitra {

/// What a stretch of history says of requests to the health store: those that have gone with their entry, and those
/// that have come back done, as a redo puts them. What they are now decides, whatever happened in between.
class WithdrawnHealthRequests {
 public:
  /// Of the transactions after `after` up to `last`, which may be the one that the context's unit will be. Throws
  /// StoreError.
  WithdrawnHealthRequests(StoreContext& context, std::int64_t after, std::int64_t last);

  /// How many changes of requests there were, also those by which nothing is withdrawn or brought back.
  [[nodiscard]] std::size_t changes() const { return changes_; }
  /// Samples to take out.
  [[nodiscard]] const std::vector<qz::UniqueID>& withdrawn() const { return withdrawn_; }
  /// Samples that are to be there.
  [[nodiscard]] const std::vector<qz::QZHKSample>& broughtBack() const { return broughtBack_; }

 private:
  std::size_t changes_ = 0;
  std::vector<qz::UniqueID> withdrawn_;
  std::vector<qz::QZHKSample> broughtBack_;
};

/// The samples of requests that have gone with their entry, and that may still be in the health store: what the history
/// says since passes over the requests have read it, and the context's unit. Throws StoreError.
[[nodiscard]] std::set<qz::UniqueID> withdrawnSamples(StoreContext& context, const KeyValueDefaults& standardDefaults);

}  // namespace habitra
