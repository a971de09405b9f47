#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/History/HistoryReaders.h>
#include <QZKit/Clock.h>

#include <chrono>
#include <cstdint>
#include <vector>

namespace habitra {

class StoreContext;

/// Lets go of history that nobody needs any more.
///
/// A transaction goes with its changes when every reader has read it, it is older than a week, and undo no longer
/// reaches it; only from the oldest on, so that what is kept has no holes. A reader that has not looked for 90 days no
/// longer counts: it will find that everything has changed. The values before a change, and backups made before big
/// commands, go as soon as undo no longer reaches them.
class HistoryTrimming {
 public:
  static constexpr std::chrono::days youngestToGo{7};
  static constexpr std::chrono::days readerForgottenAfter{90};

  /// How much one call does at most; what remains is left to the next. A command's values before go at once.
  struct Limits {
    std::int64_t transactions = 500;
    std::int64_t changes = 20'000;
  };

  struct Report {
    std::int64_t transactions = 0;  ///< removed
    std::int64_t changes = 0;       ///< removed
    std::int64_t valuesBefore = 0;  ///< changes that lost the values before
    std::int64_t backups = 0;       ///< files removed

    friend bool operator==(const Report&, const Report&) = default;
  };

  /// Takes the writers' turn only when there is something to let go of, and writes in a transaction of its own, which
  /// leaves no history. Readers are not disturbed. Does nothing in a store that may not be written. Throws StoreError.
  /// REQUIRES: no open unit and no unsaved changes in `context`.
  static Report trim(StoreContext& context, const std::vector<HistoryReader>& readers, qz::Moment now, Limits limits);
  static Report trim(StoreContext& context, const std::vector<HistoryReader>& readers, qz::Moment now) {
    return trim(context, readers, now, Limits{});
  }

  /// The key of the defaults that says when trimDaily() last did something or looked in vain.
  static constexpr const char* trimmedKey = "pho.trimmed";

  /// For programs that end before they would come to it again and again: trims whatever there is, the readers being
  /// those that `defaults` name, but not twice in 24 hours. Costs the reading of one row while no transaction is old
  /// enough to go, and of the defaults while some is that undo or a reader holds. The same requirement and error.
  static Report trimDaily(StoreContext& context, KeyValueDefaults& defaults, qz::Moment now);

 private:
  class Step;
};

}  // namespace habitra
