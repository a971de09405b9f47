#include <HabitraModel/Health/SampleFile.h>
#include <HabitraModel/Health/SampleObservers.h>
#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZHealthKit/QZHKStatisticsCalculation.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace habitra {

namespace {

using qz::QZHealthStoreError;
using qz::QZHKSample;
using Reason = qz::QZHealthStoreError::Reason;
using Type = qz::QZHKObjectType;
using Unit = qz::QZHKUnit;

/// Runs a step in which what the store of samples complains of is a failure of storage.
template <typename Step>
auto withStorage(const Step& step) {
  try {
    return step();
  } catch (const StoreError& error) {
    throw QZHealthStoreError(Reason::storage, error.what());
  }
}

void requireRecord(const QZHKSample& sample) {
  if (const auto found = problem(sample)) throw QZHealthStoreError(Reason::invalidSample, *found);
}

qz::QZHKStatistics figures(SampleTable& table, const qz::QZHKStatisticsQuery& query) {
  qz::QZHKStatisticsCalculation calculation(query);
  table.read(query.samples.objectType, query.samples.span,
             [&calculation](const QZHKSample& sample) { calculation.add(sample); });
  return calculation.figures();
}

std::optional<double> sumOfDay(SampleTable& table, const qz::QZHKSpan& day, Type type, Unit unit) {
  return figures(table, {.samples = {.objectType = type, .span = day, .predicate = {}},
                         .unit = unit,
                         .options = qz::QZHKStatisticsOptions::cumulativeSum})
      .sum;
}

/// The goal that stands at the end of a day; 0 without any.
double goalOfDay(SampleTable& table, const qz::QZHKSpan& day, Type type, Unit unit) {
  const auto goal = table.lastBefore(type, day.to);
  return goal ? goal->quantity()->valueIn(unit).value_or(0) : 0;
}

}  // namespace

SampleStore::SampleStore(std::unique_ptr<SampleFile> file)
    : file_(std::move(file)), observers_(std::make_unique<SampleObservers>(*file_)) {}

SampleStore::SampleStore(const std::filesystem::path& home)
    : SampleStore(std::make_unique<SampleFile>(home / fileName)) {}

std::unique_ptr<SampleStore> SampleStore::inMemory() {
  return std::unique_ptr<SampleStore>(new SampleStore(std::make_unique<SampleFile>()));
}

SampleStore::~SampleStore() = default;

bool SampleStore::isHealthDataAvailable() const noexcept {
  try {
    const SampleFile::Use use = file_->beginReading();
    return use && use->table.hasEverHadSamples();
  } catch (const std::exception&) {
    return false;
  }
}

std::vector<QZHKSample> SampleStore::samples(const qz::QZHKSampleQuery& query) const {
  return withStorage([&] {
    std::vector<QZHKSample> found;
    const SampleFile::Use use = file_->beginReading();
    if (!use) return found;
    use->table.read(query.objectType, query.span, [&](const QZHKSample& sample) {
      if (query.matches(sample)) found.push_back(sample);
    });
    return found;
  });
}

qz::QZHKStatistics SampleStore::statistics(const qz::QZHKStatisticsQuery& query) const {
  if (const auto found = problem(query)) throw QZHealthStoreError(Reason::invalidQuery, *found);
  return withStorage([&] {
    const SampleFile::Use use = file_->beginReading();
    return use ? figures(use->table, query) : qz::QZHKStatistics{.unit = query.unit};
  });
}

std::optional<qz::QZHKActivitySummary> SampleStore::activitySummary(const qz::QZHKSpan& day) const {
  return withStorage([&]() -> std::optional<qz::QZHKActivitySummary> {
    const SampleFile::Use use = file_->beginReading();
    if (!use) return std::nullopt;
    SampleTable& table = use->table;
    const auto move = sumOfDay(table, day, Type::activeEnergyBurned, Unit::kilocalorie);
    const auto exercise = sumOfDay(table, day, Type::exerciseTime, Unit::minute);
    // No hours stand below any number of them.
    const auto stand =
        std::max(sumOfDay(table, day, Type::standHour, Unit::count), sumOfDay(table, day, Type::rollHour, Unit::count));
    if (!move && !exercise && !stand) return std::nullopt;
    return qz::QZHKActivitySummary{
        .day = day,
        .move = {move.value_or(0), goalOfDay(table, day, Type::activeEnergyGoal, Unit::kilocalorie)},
        .exercise = {exercise.value_or(0), goalOfDay(table, day, Type::exerciseGoal, Unit::minute)},
        .stand = {stand.value_or(0), goalOfDay(table, day, Type::standGoal, Unit::count)}};
  });
}

std::set<qz::UniqueID> SampleStore::known(std::span<const qz::UniqueID> identifiers) const {
  return withStorage([&] {
    std::set<qz::UniqueID> found;
    const SampleFile::Use use = file_->beginReading();
    if (!use) return found;
    for (const qz::UniqueID& identifier : identifiers)
      if (use->table.has(identifier)) found.insert(identifier);
    return found;
  });
}

qz::QZHKChanges SampleStore::changesSince(std::int64_t number) const {
  return withStorage([&] {
    const SampleFile::Use use = file_->beginReading();
    return use ? use->table.changesSince(number) : qz::QZHKChanges{};
  });
}

void SampleStore::save(std::span<const QZHKSample> samples) {
  for (const QZHKSample& sample : samples) requireRecord(sample);
  saveEach([samples](const Sink& sink) {
    for (const QZHKSample& sample : samples) sink(sample);
  });
}

SampleStore::Saved SampleStore::saveEach(const Producer& produce) {
  return withStorage([&] {
    std::optional<SampleFile::Use> use;
    Saved saved;
    qz::QZHKChanges changed;
    produce([&](const QZHKSample& sample) {
      requireRecord(sample);
      if (!use) use.emplace(file_->beginWriting());
      if ((*use)->table.insert(sample)) {
        ++saved.added;
        changed.include(sample.objectType, {sample.start, sample.end});
      } else {
        ++saved.left;
      }
    });
    if (use) use->commit(changed.reaches);
    return saved;
  });
}

void SampleStore::remove(std::span<const qz::UniqueID> identifiers) {
  withStorage([&] {
    if (identifiers.empty() || !file_->beginReading()) return;
    SampleFile::Use use = file_->beginWriting();
    qz::QZHKChanges changed;
    for (const qz::UniqueID& identifier : identifiers) use->table.remove(identifier, changed);
    use.commit(changed.reaches);
  });
}

void SampleStore::startObserving(const qz::QZHKObserverQuery& query, ChangeHandler handler) {
  withStorage([&] { observers_->start(query, std::move(handler)); });
}

void SampleStore::stopObserving(const qz::UniqueID& identifier) noexcept { observers_->stop(identifier); }

}  // namespace habitra
