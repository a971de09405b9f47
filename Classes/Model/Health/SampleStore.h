#pragma once

#include <QZHealthKit/QZHealthStore.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace habitra {

class SampleFile;
class SampleObservers;

/// Health data of our own: samples that were imported or recorded, in a file of the home or in memory.
///
/// The file has nothing to do with the store of tasks: its writers take turns by a lock of its own, so that a long
/// import holds up no recording. Nothing is opened before it is needed, and reading makes nothing. docs/Health.md
/// describes it.
///
/// May be shared by any threads; a store in memory must not be asked by the function that saveEach() calls.
class SampleStore final : public qz::QZHealthStore {
 public:
  static constexpr const char* fileName = "Habitra-Health.sqlite";
  /// "HbHe", kept in the file as SQLite's application_id.
  static constexpr std::int32_t applicationID = 0x48624865;
  /// The version of the layout, kept as SQLite's user_version. A new type of sample leaves it as it is; a new unit,
  /// sleep value or activity raises it, since they stand in rows of types that were there before.
  static constexpr int schemaVersion = 1;

  /// Takes one more sample.
  using Sink = std::function<void(const qz::QZHKSample&)>;
  /// Hands over samples, one after the other.
  using Producer = std::function<void(const Sink&)>;

  /// How many samples were written, and how many were there already.
  struct Saved {
    std::size_t added = 0;
    std::size_t left = 0;
  };

  /// The samples of the home at `home`.
  explicit SampleStore(const std::filesystem::path& home);
  /// Samples in memory that live as long as this object.
  [[nodiscard]] static std::unique_ptr<SampleStore> inMemory();
  /// REQUIRES: not called by a handler of changes.
  ~SampleStore() override;

  [[nodiscard]] bool isHealthDataAvailable() const noexcept override;
  [[nodiscard]] std::vector<qz::QZHKSample> samples(const qz::QZHKSampleQuery& query) const override;
  [[nodiscard]] qz::QZHKStatistics statistics(const qz::QZHKStatisticsQuery& query) const override;
  [[nodiscard]] std::optional<qz::QZHKActivitySummary> activitySummary(const qz::QZHKSpan& day) const override;
  [[nodiscard]] std::set<qz::UniqueID> known(std::span<const qz::UniqueID> identifiers) const override;
  [[nodiscard]] qz::QZHKChanges changesSince(std::int64_t number) const override;
  void save(std::span<const qz::QZHKSample> samples) override;
  void remove(std::span<const qz::UniqueID> identifiers) override;
  /// Also throws `storage` when the system gives no notifications, or there is no home to watch.
  void startObserving(const qz::QZHKObserverQuery& query, ChangeHandler handler) override;
  void stopObserving(const qz::UniqueID& identifier) noexcept override;

  /// As save(), for more than fits in memory. The writers' turn is taken with the first sample and kept to the end.
  /// What `produce` throws reaches the caller, and nothing is written.
  Saved saveEach(const Producer& produce);

 private:
  explicit SampleStore(std::unique_ptr<SampleFile> file);

  std::unique_ptr<SampleFile> file_;
  std::unique_ptr<SampleObservers> observers_;
};

}  // namespace habitra
