#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <QZKit/Clock.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {

/// Up to when this device has processed each task, in the standard defaults: by its identifier, a moment. The task's
/// own `lastProcessedDate`, which is saved together with the entries, is the truth; this follows it once per pass.
/// Where the two differ the earlier one counts, since what was brought along from elsewhere may not have been looked at
/// here.
///
/// Belongs to one queue.
class LastProcessedDates {
 public:
  static constexpr std::string_view key = "tp.lastProcessed";
  using Dates = std::map<std::string, qz::Moment, std::less<>>;

  explicit LastProcessedDates(KeyValueDefaults& standardDefaults) : defaults_(standardDefaults) {}

  /// All of them. Throws StoreError.
  [[nodiscard]] Dates read() const;

  /// Lets these tasks have these dates, in one step; others keep theirs. Throws StoreError.
  void merge(const Dates& processed);

  /// Drops the dates of all but these tasks. Throws StoreError.
  void removeStale(const std::set<std::string>& tasks);

 private:
  KeyValueDefaults& defaults_;
};

}  // namespace habitra
