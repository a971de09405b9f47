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

namespace habitra {

/// How far a task has taken health data into account: which kinds of data, of which health store, up to which change.
/// The store keeps it with the task, so that it is always of the same moment as what followed from the data.
struct HealthAnchor {
  std::optional<qz::UniqueID> store;  ///< none: there was none yet
  std::int64_t change = 0;
  std::set<qz::QZHKObjectType> kinds;

  /// "3F2504E0-4F89-41D3-9A0C-0305E82C3301 17 distanceWalkingRunning,workout"; for no store a "-".
  [[nodiscard]] std::string text() const;
  /// None where it is no such text.
  [[nodiscard]] static std::optional<HealthAnchor> fromText(std::string_view text);

  friend bool operator==(const HealthAnchor&, const HealthAnchor&) = default;
};

/// What is new in a health store for one task, and which of its days that may have changed.
///
/// - Where the task has taken data of these kinds from this store into account, it is what came and went since.
/// - From another store, or an older state of this one, all that it has is new: whatever it can decide is looked at
///   again. What it says nothing of stands.
/// - A task that has taken none into account, or data of other kinds, begins with what is there, and nothing is new:
///   its days that are over were judged elsewhere, or by what they were asked for then.
class HealthNews {
 public:
  /// The most changes of a kind that are looked through again and again before the anchor moves on without anything
  /// else to write. The health store tells as many apart.
  static constexpr std::int64_t longestLookBack = 64;

  /// `kept`: what the store has of the task (StoreContext::healthAnchor()). To be asked for before anything is
  /// measured, so that what comes meanwhile is new again. Throws qz::QZHealthStoreError.
  HealthNews(const qz::QZHealthStore& health, const HealthMeasuring& measuring, const std::optional<std::string>& kept);

  /// The days that may have changed; none where nothing is new.
  [[nodiscard]] const std::optional<qz::YYYYMMDD::Range>& days() const { return days_; }
  [[nodiscard]] bool mayHaveChanged(const TaskFrequencyPeriod& period) const;

  /// Leaves what is new to somebody else. It stays new; only a beginning is kept.
  void leave();

  /// What is to be kept once all this has been taken into account; none where that is kept already.
  [[nodiscard]] const std::optional<std::string>& anchor() const { return anchor_; }
  /// Whether it has to be kept even where there is nothing else to write.
  [[nodiscard]] bool mustBeKept() const { return mustBeKept_; }

 private:
  std::optional<qz::YYYYMMDD::Range> days_;
  std::optional<std::string> anchor_;
  bool begins_ = false;  ///< nothing was taken into account before
  bool mustBeKept_ = false;
};

}  // namespace habitra
