#pragma once

#include <QZHealthKit/QZHealthStoreError.h>
#include <QZHealthKit/QZHKActivitySummary.h>
#include <QZHealthKit/QZHKChanges.h>
#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKStatistics.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace qz {

/// Where health data are kept: what tasks that complete themselves read, and what they write for the user.
///
/// Every function may be called from any thread, and by handlers of changes. Those that read or write samples throw
/// QZHealthStoreError with `storage` when the samples cannot be read or written.
class QZHealthStore {
 public:
  /// Told which of the observed types changed, whichever process changed them. Called on a thread of the store, one
  /// call at a time for a query. It must not throw: the store writes to the log what is thrown at it, with the query's
  /// debugDescription(), and goes on as if the change had been told.
  using ChangeHandler = std::function<void(const QZHKObserverQuery& query, const std::set<QZHKObjectType>& changed)>;

  QZHealthStore() = default;
  QZHealthStore(const QZHealthStore&) = delete;
  QZHealthStore& operator=(const QZHealthStore&) = delete;
  virtual ~QZHealthStore() = default;

  /// Whether there is any sample, or ever was one: what was removed says something, too. Where there is none,
  /// everything that is asked has an empty answer; it is no error. Throws nothing: where the store cannot be read there
  /// is none.
  [[nodiscard]] virtual bool isHealthDataAvailable() const noexcept = 0;

  /// The samples that the query matches, by start and then by identifier.
  [[nodiscard]] virtual std::vector<QZHKSample> samples(const QZHKSampleQuery& query) const = 0;

  /// The figures that the query asks for, over the samples that it matches. Also throws `invalidQuery`, with the text
  /// of problem(query).
  [[nodiscard]] virtual QZHKStatistics statistics(const QZHKStatisticsQuery& query) const = 0;

  /// The rings of a day; none when no sample of it adds to a ring, whether there are goals or not.
  [[nodiscard]] virtual std::optional<QZHKActivitySummary> activitySummary(const QZHKSpan& day) const = 0;

  /// Which of these samples are there.
  [[nodiscard]] virtual std::set<UniqueID> known(std::span<const UniqueID> identifiers) const = 0;

  /// What has changed since the change with this number, which an earlier answer named; 0: since the beginning. Where
  /// the store never came so far, since another one lies in its place, it is all that there is. Numbers are those of
  /// one store only: who keeps one keeps the store's identifier with it.
  [[nodiscard]] virtual QZHKChanges changesSince(std::int64_t number) const = 0;

  /// Writes all of the samples or, when it throws, none. One whose identifier is there already is left as it is and is
  /// no change, so that a write that is repeated after a crash counts once. Who has no identifier for a sample, like an
  /// import of rows, derives one from all that the row says and from the number of equal rows before it, so that the
  /// same file counts once however often it is read. Also throws `invalidSample`, with the text of the first problem().
  virtual void save(std::span<const QZHKSample> samples) = 0;

  /// Takes out all samples with these identifiers or, when it throws, none: the undo of what was written or imported.
  /// Unknown identifiers are passed over and are no change. What was taken out may be saved again.
  virtual void remove(std::span<const UniqueID> identifiers) = 0;

  /// Calls the handler when samples of the query's types come or go (the summary of a day goes with its rings and
  /// goals), from now until stopObserving(). Nothing of what was before is told: ask for it once this has returned, and
  /// no change falls between. A query whose identifier is being observed takes the place of the one before, as if that
  /// had been stopped first.
  /// REQUIRES: as stopObserving(), when the identifier is being observed.
  virtual void startObserving(const QZHKObserverQuery& query, ChangeHandler handler) = 0;

  /// Once it has returned, the handler of the query is not running and is not called any more; from within the handler
  /// itself it returns at once. Changes that were not told yet are dropped. Does nothing when no query with this
  /// identifier is observed. Throws nothing.
  /// REQUIRES: the caller holds no lock, and is nothing else, that the running handler may wait for.
  virtual void stopObserving(const UniqueID& identifier) noexcept = 0;
};

}  // namespace qz
