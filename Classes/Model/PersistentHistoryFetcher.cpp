#include <HabitraModel/PersistentHistoryFetcher.h>

#include <fmt/format.h>

#include <utility>

namespace habitra {

namespace {

using Reason = PersistentHistoryFetcher::Error::Reason;

[[noreturn]] void fail(StoreContext& context, std::string_view what) {
  const std::string file = context.store().file().string();
  throw PersistentHistoryFetcher::Error(
      Reason::historyTransactionConvertionFailed,
      fmt::format("the history of {} cannot be read: {}", file.empty() ? "the store in memory" : file, what));
}

}  // namespace

HistoryToken PersistentHistoryFetcher::currentToken() {
  return {.storeIdentifier = context_.storeIdentifier(), .sequence = context_.sequence()};
}

bool PersistentHistoryFetcher::reachesBackTo(const HistoryToken& token) {
  const HistoryToken here = currentToken();
  return token.storeIdentifier == here.storeIdentifier && token.sequence <= here.sequence &&
         token.sequence + 1 >= context_.oldestKeptSequence();
}

PersistentHistory PersistentHistoryFetcher::fetch() {
  PersistentHistory history{.token = currentToken()};
  // Whether an earlier one would have been asked for shows only in the oldest that is left.
  history.everythingChanged = context_.oldestKeptSequence() > 1;
  context_.readTransactions(
      0,
      [&](const StoredTransaction& oldest) {
        if (fromDate_ && oldest.moment < *fromDate_) history.everythingChanged = false;
      },
      1);
  history.transactions = readAfter(0, history.token.sequence, noLimit, fromDate_);
  return history;
}

PersistentHistory PersistentHistoryFetcher::fetch(const HistoryToken& token, std::int64_t limit) {
  PersistentHistory history{.token = currentToken()};
  history.everythingChanged = !reachesBackTo(token);
  if (history.everythingChanged) return history;
  const std::int64_t newest = history.token.sequence;
  history.transactions = readAfter(token.sequence, newest, limit, std::nullopt);
  history.token.sequence =
      history.transactions.empty() ? token.sequence : history.transactions.back().transaction.sequence;
  history.hasMore = history.token.sequence < newest;
  return history;
}

std::vector<PersistentHistoryTransaction> PersistentHistoryFetcher::readAfter(std::int64_t sequence,
                                                                              std::int64_t newest, std::int64_t limit,
                                                                              const std::optional<qz::Moment>& from) {
  std::vector<PersistentHistoryTransaction> transactions;
  try {
    // Numbers ascend by one; the oldest kept one may be any.
    const std::int64_t first = sequence == 0 ? context_.oldestKeptSequence() : sequence + 1;
    std::int64_t expected = first;
    context_.readTransactions(
        sequence,
        [&](const StoredTransaction& transaction) {
          if (transaction.sequence != expected) fail(context_, fmt::format("transaction {} is missing", expected));
          ++expected;
          if (!from || transaction.moment >= *from) transactions.push_back({transaction, {}});
        },
        limit);
    if (expected - first < limit && expected <= newest)
      fail(context_, fmt::format("transaction {} is missing", expected));
    for (PersistentHistoryTransaction& read : transactions) {
      context_.readChanges(read.transaction.sequence,
                           [&read](const StoredChange& change) { read.changes.push_back(change); });
    }
  } catch (const StoreError& error) {
    if (error.kind() != StoreError::Kind::damaged) throw;
    fail(context_, error.what());
  }
  return transactions;
}

}  // namespace habitra
