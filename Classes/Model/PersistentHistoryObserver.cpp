#include <HabitraModel/PersistentHistoryObserver.h>
#include <HabitraModel/Store/History/HistoryReaders.h>
#include <HabitraModel/Store/History/HistoryTrimming.h>
#include <QZLog/Log.h>

#include <chrono>
#include <exception>
#include <utility>

namespace habitra {

namespace {

/// Transactions read at a time: each batch is held in memory, and the position moves after it.
constexpr std::int64_t batchSize = 100;

/// What nobody needs any more grows by the day; looking for it takes a millisecond.
constexpr std::chrono::hours timeBetweenTrimmings{1};

template <typename Call>
void logFailure(std::string_view what, const Call& call) noexcept {
  try {
    call();
  } catch (const std::exception& error) {
    qz::log::error("{}: {}", what, error.what());
  }
}

}  // namespace

PersistentHistoryObserver::PersistentHistoryObserver(
    Author target, std::shared_ptr<KeyValueDefaults> userDefaults,
    std::shared_ptr<HabitraNSPersistentCloudKitContainer> persistentContainer, Handler handler, Merge merge)
    : target_(target),
      userDefaults_(std::move(userDefaults)),
      persistentContainer_(std::move(persistentContainer)),
      handler_(std::move(handler)),
      merge_(std::move(merge)) {}

PersistentHistoryObserver::~PersistentHistoryObserver() { stop(); }

qz::SerialQueue& PersistentHistoryObserver::historyQueue() {
  std::call_once(queueIsMade_, [this] { historyQueue_ = std::make_unique<qz::SerialQueue>(queueLabel); });
  return *historyQueue_;
}

void PersistentHistoryObserver::start() {
  if (watcher_ != nullptr) return;
  // Watching begins before the first reading, so that nothing falls between the two.
  watcher_ = std::make_unique<StoreChangeWatcher>(*persistentContainer_->store(), [this] { wake(); });
  wake();
}

void PersistentHistoryObserver::stop() {
  watcher_.reset();
  historyQueue().sync([this] { context_.reset(); });
}

void PersistentHistoryObserver::processNow() {
  historyQueue().sync([this] { process(); });
}

void PersistentHistoryObserver::wake() {
  if (isWoken_.exchange(true)) return;
  historyQueue().async([this] {
    isWoken_ = false;
    process();
  });
}

void PersistentHistoryObserver::process() noexcept {
  logFailure("The changes of others could not be read", [this] {
    openContext();
    while (processBatch()) {
    }
  });
  if (context_ != nullptr) logFailure("The history could not be trimmed", [this] { trim(); });
}

void PersistentHistoryObserver::openContext() {
  const std::shared_ptr<Store> store = persistentContainer_->store();
  if (context_ != nullptr && &context_->store() == store.get()) return;
  // The position stays: in another store it says that everything has changed.
  context_ = std::make_unique<StoreContext>(store);
}

bool PersistentHistoryObserver::processBatch() {
  context_->refresh();
  PersistentHistoryFetcher fetcher(*context_);
  PersistentHistory history{.everythingChanged = true};
  if (!position_) {
    logFailure("How far the history was read is not known", [this] {
      if (const auto reader = historyReader(*userDefaults_, target_)) position_ = reader->token;
    });
  }
  const bool hasReadBefore = position_.has_value();
  try {
    if (hasReadBefore)
      history = fetcher.fetch(*position_, batchSize);
    else
      history.token = fetcher.currentToken();
  } catch (const PersistentHistoryFetcher::Error& error) {
    qz::log::error("{}", error.what());
    history.token = fetcher.currentToken();
  }
  context_->refresh();  // handlers may take their time, and a view keeps the write-ahead log long
  const bool hasMoved = position_ != history.token;
  position_ = history.token;
  if (hasMoved || history.everythingChanged) {
    handle(history);
    keepPosition();
  }
  return history.hasMore;
}

void PersistentHistoryObserver::handle(const PersistentHistory& history) {
  Changes changes{.everythingChanged = history.everythingChanged};
  for (const PersistentHistoryTransaction& read : history.transactions) {
    if (persistentContainer_->isOwnWriter(read.transaction.writer)) continue;
    if (handler_) logFailure("A change could not be handled", [&] { handler_(read); });
    for (const StoredChange& change : read.changes) changes.objects[change.entity].insert(change.object);
  }
  if (merge_ && (changes.everythingChanged || !changes.objects.empty()))
    logFailure("Changes could not be merged", [&] { merge_(changes); });
}

void PersistentHistoryObserver::keepPosition() {
  try {
    setHistoryReader(*userDefaults_, target_, {.token = *position_, .lastRead = context_->store().clock().now()});
    positionIsKept_ = true;
  } catch (const std::exception& error) {
    // In a home that may not be written nothing else is to be expected; elsewhere it is said once.
    if (std::exchange(positionIsKept_, false) && !context_->store().isReadOnly())
      qz::log::error("How far the history was read could not be kept: {}", error.what());
  }
}

void PersistentHistoryObserver::trim() {
  const qz::Moment now = context_->store().clock().now();
  if (trimmed_ && now >= *trimmed_ && now - *trimmed_ < timeBetweenTrimmings) return;
  trimmed_ = now;
  HistoryTrimming::trim(*context_, historyReaders(*userDefaults_), now);
}

}  // namespace habitra
