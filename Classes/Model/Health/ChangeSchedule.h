#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKUpdateFrequency.h>

#include <chrono>
#include <optional>
#include <set>

namespace habitra {

/// When an observer is told of what changes: the first time at once, and what follows within an hour, day or week of
/// that together when that time is over. A plain value.
class ChangeSchedule {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Types = std::set<qz::QZHKObjectType>;

  explicit ChangeSchedule(qz::QZHKUpdateFrequency frequency) : frequency_(frequency) {}

  /// What has changed and is to be told.
  void add(const Types& types) { waiting_.insert(types.begin(), types.end()); }

  /// From when on it may be told; none when there is nothing to tell.
  [[nodiscard]] std::optional<Time> due() const;

  /// Takes what is to be told, which is told now.
  [[nodiscard]] Types take(Time now);

 private:
  qz::QZHKUpdateFrequency frequency_;
  Types waiting_;
  std::optional<Time> told_;
};

}  // namespace habitra
