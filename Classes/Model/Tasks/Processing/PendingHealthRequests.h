#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZKit/Clock.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <set>

namespace habitra {

/// Brings the health store to what the requests of the log entries say: the sample of a pending request is written, and
/// the sample of a request that has gone with its entry (undone, or replaced by another entry) is taken out again.
///
/// Whether a request is still wanted is told by its row alone. Samples are written without the writers' turn of the
/// tasks' store, so that a long import of samples holds up no recording; each has the identifier that was made with
/// its request, so writing it again, after a crash or by another process, changes nothing. What is found gone when the
/// rows are then marked is taken out at once; what goes later is told of by the history since the pass before, which
/// keeps what a removed request was, whoever removed it. A sample stays when the history no longer reaches back so far,
/// and when the request went with its whole task: the habit is gone, but what was drunk was drunk.
///
/// May be used from any thread; of passes that overlap only the first does anything.
class PendingHealthRequests {
 public:
  /// The key of the standard defaults under which is kept up to where the history has been read
  /// (HistoryToken::text()); absent as long as no sample was written.
  static constexpr const char* historyKey = "tp.healthRequests";

  /// What a pass did.
  struct Report {
    std::size_t written = 0;  ///< requests that are done now
    std::size_t failed = 0;   ///< requests that hold no sample
    std::size_t left = 0;     ///< requests that stay pending, as something could not be read or written
    std::size_t removed = 0;  ///< samples taken out, if they were there
    /// The kinds of data that have come to the health store or gone from it.
    std::set<qz::QZHKObjectType> changed;

    friend bool operator==(const Report&, const Report&) = default;
  };

  /// Both must live as long as this object.
  PendingHealthRequests(qz::QZHealthStore& healthStore, KeyValueDefaults& standardDefaults);

  /// One pass. Takes no turn and writes nothing where nothing is pending and nothing has gone. What goes wrong with
  /// either store is a line of the log and is tried again by the next pass; throws nothing but for lack of memory.
  /// REQUIRES: no unit is open.
  Report processPendingHealthKitRequests(StoreContext& context, qz::Moment now);

 private:
  class Pass;

  qz::QZHealthStore& healthStore_;
  KeyValueDefaults& defaults_;
  std::atomic<bool> processingHealthKitRecordRequests_ = false;
};

}  // namespace habitra
