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

PersistentHistory PersistentHistoryFetcher::fetch() {
  PersistentHistory history{.token = currentToken()};
  const std::int64_t oldest = context_.oldestKeptSequence();
  // Whether an earlier one would have been asked for shows only in the oldest that is left.
  history.everythingChanged = oldest > 1;
  for (PersistentHistoryTransaction& read : readAfter(0, history.token.sequence, noLimit)) {
    if (fromDate_ && read.transaction.sequence == oldest && read.transaction.moment < *fromDate_)
      history.everythingChanged = false;
    if (!fromDate_ || read.transaction.moment >= *fromDate_) history.transactions.push_back(std::move(read));
  }
  return history;
}

PersistentHistory PersistentHistoryFetcher::fetch(const HistoryToken& token, std::int64_t limit) {
  PersistentHistory history{.token = currentToken()};
  if (token.storeIdentifier != history.token.storeIdentifier || token.sequence > history.token.sequence ||
      token.sequence + 1 < context_.oldestKeptSequence()) {
    history.everythingChanged = true;
    return history;
  }
  const std::int64_t newest = history.token.sequence;
  history.transactions = readAfter(token.sequence, newest, limit);
  history.token.sequence =
      history.transactions.empty() ? token.sequence : history.transactions.back().transaction.sequence;
  history.hasMore = history.token.sequence < newest;
  return history;
}

std::vector<PersistentHistoryTransaction> PersistentHistoryFetcher::readAfter(std::int64_t sequence,
                                                                              std::int64_t newest, std::int64_t limit) {
  std::vector<PersistentHistoryTransaction> transactions;
  try {
    context_.readTransactions(
        sequence,
        [&](const StoredTransaction& transaction) {
          transactions.push_back({transaction, {}});
        },
        limit);
    // Numbers ascend by one; the oldest kept one may be any.
    std::int64_t expected = sequence == 0 ? context_.oldestKeptSequence() : sequence + 1;
    for (PersistentHistoryTransaction& read : transactions) {
      if (read.transaction.sequence != expected) fail(context_, fmt::format("transaction {} is missing", expected));
      ++expected;
      context_.readChanges(read.transaction.sequence,
                           [&read](const StoredChange& change) { read.changes.push_back(change); });
    }
    if (std::cmp_less(transactions.size(), limit) && expected <= newest)
      fail(context_, fmt::format("transaction {} is missing", expected));
  } catch (const StoreError& error) {
    if (error.kind() != StoreError::Kind::damaged) throw;
    fail(context_, error.what());
  }
  return transactions;
}

}  // namespace habitra
