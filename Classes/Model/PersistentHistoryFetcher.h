#pragma once

#include <HabitraModel/Store/History/History.h>
#include <HabitraModel/Store/History/HistoryToken.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// One save, and what it did to each object.
struct PersistentHistoryTransaction {
  StoredTransaction transaction;
  std::vector<StoredChange> changes;  ///< one per object, by entity and object

  friend bool operator==(const PersistentHistoryTransaction&, const PersistentHistoryTransaction&) = default;
};

/// What has happened since somebody last looked.
struct PersistentHistory {
  /// The history does not say what has changed: it no longer reaches back so far, or the token is of another store or
  /// of a time that this one has not come to (it was replaced by an older copy). Whoever asks has to read everything
  /// anew, and goes on from `token`.
  bool everythingChanged = false;
  std::vector<PersistentHistoryTransaction> transactions;  ///< oldest first
  HistoryToken token;                                      ///< where to go on from
  bool hasMore = false;                                    ///< there are more than were asked for
};

/// Reads the history of a store. Belongs to the queue of its context, whose view it reads.
class PersistentHistoryFetcher {
 public:
  /// Why the history could not be given.
  class Error : public qz::Error {
   public:
    enum class Reason {
      /// A row cannot be read as a transaction with its changes: a kind of change, an entity or an attribute that this
      /// version does not know, a number that no object has, or a transaction that is missing between two others. An
      /// author that nobody knows is no failure; the text is given as it stands.
      historyTransactionConvertionFailed,
    };
    Error(Reason reason, const std::string& message) : qz::Error(message), reason_(reason) {}
    [[nodiscard]] Reason reason() const { return reason_; }

   private:
    Reason reason_;
  };

  static constexpr std::int64_t noLimit = std::numeric_limits<std::int64_t>::max();

  explicit PersistentHistoryFetcher(StoreContext& context, std::optional<qz::Moment> fromDate = std::nullopt)
      : context_(context), fromDate_(fromDate) {}

  [[nodiscard]] StoreContext& context() const { return context_; }
  [[nodiscard]] const std::optional<qz::Moment>& fromDate() const { return fromDate_; }

  /// The transactions whose moment is `fromDate` or later (none: all that are kept), in order of their numbers: clocks
  /// go back. When there were earlier ones that are no longer kept, `everythingChanged` says that some may be missing.
  /// Throws Error or StoreError.
  [[nodiscard]] PersistentHistory fetch();

  /// The transactions after `token`, at most `limit` of them. With `everythingChanged` there are none.
  [[nodiscard]] PersistentHistory fetch(const HistoryToken& token, std::int64_t limit = noLimit);

  /// Whether history says all that has happened since `token`; else everything may have changed.
  [[nodiscard]] bool reachesBackTo(const HistoryToken& token);

  /// Where the store stands now.
  [[nodiscard]] HistoryToken currentToken();

 private:
  /// Of at most `limit` transactions after `sequence`, those of the moment `from` or later with their changes; up to
  /// `newest` none may be missing.
  [[nodiscard]] std::vector<PersistentHistoryTransaction> readAfter(std::int64_t sequence, std::int64_t newest,
                                                                    std::int64_t limit,
                                                                    const std::optional<qz::Moment>& from);

  StoreContext& context_;
  std::optional<qz::Moment> fromDate_;
};

}  // namespace habitra
