#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Tasks/Processing/PendingHealthRequests.h>
#include <HabitraModel/Tasks/Processing/WithdrawnHealthRequests.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace habitra {

namespace {

using Report = PendingHealthRequests::Report;

/// What is to become of a row that was pending.
struct Outcome {
  ObjectID request = ObjectID::none;
  std::optional<qz::QZHKSample> sample;  ///< none: it holds none, or the health store refuses it
};

/// Lets the flag be down again whatever happens.
class Raised {
 public:
  explicit Raised(std::atomic<bool>& flag) : flag_(flag) {}
  ~Raised() { flag_ = false; }
  Raised(const Raised&) = delete;
  Raised& operator=(const Raised&) = delete;

 private:
  std::atomic<bool>& flag_;
};

}  // namespace

class PendingHealthRequests::Pass {
 public:
  Pass(qz::QZHealthStore& healthStore, KeyValueDefaults& defaults, StoreContext& context, qz::Moment now)
      : healthStore_(healthStore), defaults_(defaults), context_(context), now_(now) {}

  void writePending();
  void followHistory();
  /// Once all is done, or has failed: which kinds of data have changed by it.
  void noteChanges();
  [[nodiscard]] const Report& report() const { return report_; }

 private:
  [[nodiscard]] std::vector<Outcome> readPending();
  void beginHistory();
  void keepHistoryUpTo(const HistoryToken& token) { defaults_.set(historyKey, token.text()); }
  void save(std::span<const qz::QZHKSample> samples);
  void remove(std::span<const qz::UniqueID> samples);
  void beforeChange();
  void writeSamples(std::vector<Outcome>& outcomes);
  void writeOneByOne(std::vector<Outcome>& outcomes);
  [[nodiscard]] std::vector<qz::UniqueID> mark(const std::vector<Outcome>& outcomes);
  void bringToTheirState(const WithdrawnHealthRequests& found);

  qz::QZHealthStore& healthStore_;
  KeyValueDefaults& defaults_;
  StoreContext& context_;
  qz::Moment now_;
  std::optional<std::int64_t> changeBefore_;  ///< the health store's newest before its first change
  Report report_;
};

std::vector<Outcome> PendingHealthRequests::Pass::readPending() {
  std::vector<Outcome> outcomes;
  for (const auto* row : context_.fetch<HealthKitRequestEntity>("status", health_request_status::pending)) {
    auto request = HealthWriteRequest::of(*row);
    if (!request) qz::log::warning("HealthKit request {} cannot be read", rawValue(row->objectID));
    outcomes.push_back({row->objectID, request ? std::optional(std::move(request->sample)) : std::nullopt});
  }
  return outcomes;
}

void PendingHealthRequests::Pass::writePending() {
  std::vector<Outcome> outcomes = readPending();
  qz::log::info("Processing HealthKit entries ({})", outcomes.size());
  if (outcomes.empty()) return;
  report_.left = outcomes.size();
  beginHistory();
  writeSamples(outcomes);
  const std::vector<qz::UniqueID> gone = mark(outcomes);
  remove(gone);
  report_.removed += gone.size();
}

/// What goes from before the first sample was written on is followed.
void PendingHealthRequests::Pass::beginHistory() {
  const HistoryToken here = PersistentHistoryFetcher(context_).currentToken();
  const auto text = defaults_.get<std::string>(historyKey);
  const auto kept = text ? HistoryToken::fromText(*text) : std::nullopt;
  if (!kept || kept->storeIdentifier != here.storeIdentifier) keepHistoryUpTo(here);
}

void PendingHealthRequests::Pass::writeSamples(std::vector<Outcome>& outcomes) {
  std::vector<qz::QZHKSample> samples;
  for (const Outcome& outcome : outcomes)
    if (outcome.sample) samples.push_back(*outcome.sample);
  if (samples.empty()) return;
  try {
    save(samples);
  } catch (const qz::QZHealthStoreError& error) {
    if (error.reason() != qz::QZHealthStoreError::Reason::invalidSample) throw;
    writeOneByOne(outcomes);
  }
}

/// So that one that the health store refuses costs the others nothing.
void PendingHealthRequests::Pass::writeOneByOne(std::vector<Outcome>& outcomes) {
  for (Outcome& outcome : outcomes) {
    if (!outcome.sample) continue;
    try {
      save(std::span(&*outcome.sample, 1));
    } catch (const qz::QZHealthStoreError& error) {
      if (error.reason() != qz::QZHealthStoreError::Reason::invalidSample) throw;
      qz::log::warning("HealthKit request {} is refused: {}", rawValue(outcome.request), error.what());
      outcome.sample.reset();
    }
  }
}

/// Marks the rows that are pending still. Gives the samples of those that have gone meanwhile.
std::vector<qz::UniqueID> PendingHealthRequests::Pass::mark(const std::vector<Outcome>& outcomes) {
  std::vector<qz::UniqueID> gone;
  Report marked{.removed = report_.removed};
  context_.beginUnit();
  for (const Outcome& outcome : outcomes) {
    auto* const row = context_.find<HealthKitRequestEntity>(outcome.request);
    if (row == nullptr && outcome.sample) gone.push_back(outcome.sample->identifier);
    if (row == nullptr || row->status != health_request_status::pending) continue;
    row->status = outcome.sample ? health_request_status::done : health_request_status::failed;
    row->statusDate = now_;
    ++(outcome.sample ? marked.written : marked.failed);
  }
  context_.save({});
  report_ = marked;
  return gone;
}

/// Reads on from where the pass before came to, of each transaction no more than what became of requests. How far that
/// was is written down once there was any such thing, or when many transactions have been looked at.
void PendingHealthRequests::Pass::followHistory() {
  constexpr std::int64_t atOnce = 256;
  const auto text = defaults_.get<std::string>(historyKey);
  auto kept = text ? HistoryToken::fromText(*text) : std::nullopt;
  if (!kept) return;
  PersistentHistoryFetcher history(context_);
  const HistoryToken here = history.currentToken();
  if (!history.reachesBackTo(*kept)) return keepHistoryUpTo(here);
  while (kept->sequence < here.sequence) {
    const std::int64_t last = std::min(here.sequence, kept->sequence + atOnce);
    const bool isMuch = last - kept->sequence == atOnce;
    const WithdrawnHealthRequests found(context_, kept->sequence, last);
    bringToTheirState(found);
    kept->sequence = last;
    if (isMuch || found.changes() > 0) keepHistoryUpTo(*kept);
  }
}

void PendingHealthRequests::Pass::bringToTheirState(const WithdrawnHealthRequests& found) {
  save(found.broughtBack());
  remove(found.withdrawn());
  report_.removed += found.withdrawn().size();
}

void PendingHealthRequests::Pass::save(std::span<const qz::QZHKSample> samples) {
  if (samples.empty()) return;
  beforeChange();
  healthStore_.save(samples);
}

void PendingHealthRequests::Pass::remove(std::span<const qz::UniqueID> samples) {
  if (samples.empty()) return;
  beforeChange();
  healthStore_.remove(samples);
}

void PendingHealthRequests::Pass::beforeChange() {
  if (!changeBefore_) changeBefore_ = healthStore_.changesSince(0).newest;
}

void PendingHealthRequests::Pass::noteChanges() {
  if (!changeBefore_) return;
  for (const auto& [type, number] : healthStore_.changesSince(*changeBefore_).numbers) report_.changed.insert(type);
}

PendingHealthRequests::PendingHealthRequests(qz::QZHealthStore& healthStore, KeyValueDefaults& standardDefaults)
    : healthStore_(healthStore), defaults_(standardDefaults) {}

Report PendingHealthRequests::processPendingHealthKitRequests(StoreContext& context, qz::Moment now) {
  if (processingHealthKitRecordRequests_.exchange(true)) {
    qz::log::info("Already processing HealthKit requests, skipping");
    return {};
  }
  const Raised raised(processingHealthKitRecordRequests_);
  Pass pass(healthStore_, defaults_, context, now);
  try {
    context.refresh();
    pass.followHistory();
    pass.writePending();
  } catch (const qz::Error& error) {
    context.rollback();
    qz::log::warning("HealthKit requests could not be processed: {}", error.what());
  }
  try {
    pass.noteChanges();
  } catch (const qz::Error& error) {
    qz::log::warning("What requests have changed in the health store is left to the next pass: {}", error.what());
  }
  return pass.report();
}

}  // namespace habitra
