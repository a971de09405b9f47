#pragma once

#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZKit/UniqueID.h>

#include <map>
#include <vector>

namespace habitra {

/// What a stretch of history says of requests to the health store: those that have gone with their entry, and those
/// that have come back done, as a redo puts them. What they are now decides, whatever happened in between.
class WithdrawnHealthRequests {
 public:
  /// Throws StoreError.
  WithdrawnHealthRequests(StoreContext& context, const std::vector<PersistentHistoryTransaction>& transactions);

  [[nodiscard]] bool isEmpty() const { return withdrawn_.empty() && broughtBack_.empty(); }
  /// Samples to take out.
  [[nodiscard]] const std::vector<qz::UniqueID>& withdrawn() const { return withdrawn_; }
  /// Samples that are to be there.
  [[nodiscard]] const std::vector<qz::QZHKSample>& broughtBack() const { return broughtBack_; }

 private:
  using Removed = std::map<ObjectID, qz::UniqueID>;  ///< the samples of the requests that went

  static void read(StoreContext& context, const PersistentHistoryTransaction& transaction, Removed& removed,
                   std::vector<ObjectID>& inserted);

  std::vector<qz::UniqueID> withdrawn_;
  std::vector<qz::QZHKSample> broughtBack_;
};

}  // namespace habitra
