#pragma once

#include <QZHealthKit/QZHealthStoreError.h>
#include <QZHealthKit/QZHKActivitySummary.h>
#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKStatistics.h>
#include <QZKit/UniqueID.h>

#include <functional>
#include <set>
#include <span>
#include <vector>

namespace qz {

/// Where health data are kept: what tasks that complete themselves read, and what they write for the user.
///
/// Every function may be called from any thread. Where not said otherwise each throws QZHealthStoreError, with
/// `notAvailable` when there are no health data here and `storage` when they cannot be read or written.
class QZHealthStore {
 public:
  /// Told which of the observed types changed. Called on a thread of the store, one call at a time for a query.
  using ChangeHandler = std::function<void(const QZHKObserverQuery& query, const std::set<QZHKObjectType>& changed)>;

  QZHealthStore() = default;
  QZHealthStore(const QZHealthStore&) = delete;
  QZHealthStore& operator=(const QZHealthStore&) = delete;
  virtual ~QZHealthStore() = default;

  /// Whether there are health data here at all. Throws nothing.
  [[nodiscard]] virtual bool isHealthDataAvailable() const noexcept = 0;

  /// The samples that the query matches, by start and then by identifier.
  [[nodiscard]] virtual std::vector<QZHKSample> samples(const QZHKSampleQuery& query) const = 0;

  /// What statistics(samples, query) answers from all samples of the store. Also throws `invalidQuery`.
  [[nodiscard]] virtual QZHKStatistics statistics(const QZHKStatisticsQuery& query) const = 0;

  /// The summaries of the days that begin within the span, by day.
  [[nodiscard]] virtual std::vector<QZHKActivitySummary> activitySummaries(const QZHKSpan& span) const = 0;

  /// Writes all of the samples or, when it throws, none. One whose identifier is there already is left as it is, so
  /// that a write that is repeated after a crash counts once. Also throws `invalidSample`, naming the first problem().
  virtual void save(std::span<const QZHKSample> samples) = 0;

  /// Calls the handler when the types of the query change, from now until stopObserving(). A query with an identifier
  /// that is being observed takes its place.
  virtual void startObserving(const QZHKObserverQuery& query, ChangeHandler handler) = 0;

  /// Once it has returned, the handler of the query is not running and is not called any more; from within the handler
  /// itself it returns at once. Does nothing when no query with this identifier is observed. Throws nothing.
  virtual void stopObserving(const UniqueID& identifier) noexcept = 0;
};

}  // namespace qz
