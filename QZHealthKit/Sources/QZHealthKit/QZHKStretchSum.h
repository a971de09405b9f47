#pragma once

#include <QZHealthKit/QZHKQuery.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <unordered_map>

namespace qz {

/// Adds up what several sources measured, so that what they measured at the same time counts once: time is cut at every
/// quarter of an hour since 1970, and in each stretch the source that adds most stands alone.
///
/// Holds the stretches that later samples can still reach, and no others. Belongs to one thread.
///
/// Parts are kept as long doubles: those of a whole number, added up again, come back to that number.
class QZHKStretchSum {
 public:
  /// Adds an amount that is spread evenly over a time, or stands at its beginning where that has no length.
  /// REQUIRES: the time does not begin before that of the call before, nor end before it begins.
  void add(const std::string& source, Moment from, Moment to, long double amount);

  [[nodiscard]] double sum() const;

 private:
  using AmountsBySource = std::map<std::size_t, long double>;

  [[nodiscard]] std::size_t numberOf(const std::string& source);
  [[nodiscard]] AmountsBySource& stretch(std::int64_t number);
  void closeBefore(std::int64_t number);

  std::unordered_map<std::string, std::size_t> sources_;
  long double closed_ = 0;      // the sum of the stretches before firstOpen_
  std::int64_t firstOpen_ = 0;  // of open_, by quarters of an hour since 1970
  std::deque<AmountsBySource> open_;
};

}  // namespace qz
