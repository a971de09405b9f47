#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraModel/Tasks/Processing/HealthMeasuring.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZHealthKit/QZHKObjectType.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace habitra {

/// How far a task has taken health data into account: which kinds of data, of which health store, up to which change,
/// and what was measured in them. The store keeps it with the task, so that it is always of the same moment as what
/// followed from the data.
struct HealthAnchor {
  std::optional<qz::UniqueID> store;  ///< none: there was none yet
  std::int64_t change = 0;
  std::set<qz::QZHKObjectType> kinds;
  std::string yardstick;  ///< HealthMeasuring::yardstick()
  /// From when on it is measured so; none: always.
  std::optional<qz::YYYYMMDD> since = std::nullopt;

  /// "3F2504E0-4F89-41D3-9A0C-0305E82C3301 17 distanceWalkingRunning,workout runOrWalk/km//all 20240220"; "-" for no
  /// store, and for no day.
  [[nodiscard]] std::string text() const;
  /// None where it is no such text.
  [[nodiscard]] static std::optional<HealthAnchor> fromText(std::string_view text);

  friend bool operator==(const HealthAnchor&, const HealthAnchor&) = default;
};

/// What is new of a period.
struct PeriodNews {
  /// Samples of it came or went, or of days around it, which are told apart no more.
  bool mayHaveChanged = false;
  /// Samples of it came or went in the store that was taken into account: where it has none, there were some.
  bool hasChanged = false;
  /// It was over before the task was measured as it is now.
  bool isOfOtherMeasure = false;
};

/// What is new in a health store for one task, and which of its days that may have changed.
///
/// - Where the task has taken data of these kinds from this store into account, it is what came and went since.
/// - From another store, or an older state of this one, all that it has is new: whatever it can decide is looked at
///   again. What it says nothing of stands.
/// - A task that has taken none into account, or is measured otherwise than it was (by other kinds of data, in another
///   unit), begins with what is there, and nothing is new: its days that are over were judged elsewhere, or by what
///   they were asked for then.
class HealthNews {
 public:
  /// The most changes of a kind that are looked through again and again before the anchor moves on without anything
  /// else to write. The health store tells many more apart.
  static constexpr std::int64_t longestLookBack = 64;

  /// `kept`: what the store has of the task (StoreContext::healthAnchor()). To be asked for before anything is
  /// measured, so that what comes meanwhile is new again. Throws qz::QZHealthStoreError.
  HealthNews(const qz::QZHealthStore& health, const HealthMeasuring& measuring, const std::optional<std::string>& kept,
             qz::YYYYMMDD today);

  /// Whether the store was ever given data.
  [[nodiscard]] bool hasData() const { return hasData_; }
  /// The first day that may have changed; none where nothing is new.
  [[nodiscard]] std::optional<qz::YYYYMMDD> earliestDay() const;
  [[nodiscard]] PeriodNews of(const TaskFrequencyPeriod& period) const;

  /// Leaves what is new to somebody else. It stays new; only a beginning is kept.
  void leave();

  /// What is to be kept once all this has been taken into account; none where that is kept already.
  [[nodiscard]] const std::optional<std::string>& anchor() const { return anchor_; }
  /// Whether it has to be kept even where there is nothing else to write.
  [[nodiscard]] bool mustBeKept() const { return mustBeKept_; }

 private:
  using Days = std::pair<qz::YYYYMMDD, qz::YYYYMMDD>;  ///< the first and the last

  void findDays(const HealthMeasuring& measuring, const qz::QZHKChanges& changes, bool goesOn);

  std::vector<Days> changed_;
  std::vector<Days> vaguelyChanged_;
  std::optional<qz::YYYYMMDD> since_;  ///< from when on the task is measured as it is
  bool hasData_ = false;
  std::optional<std::string> anchor_;
  bool begins_ = false;  ///< nothing was taken into account before
  bool mustBeKept_ = false;
};

}  // namespace habitra
