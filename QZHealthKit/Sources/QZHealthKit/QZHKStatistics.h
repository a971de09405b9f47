#pragma once

#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKUnit.h>
#include <QZKit/Clock.h>

#include <chrono>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace qz {

/// Figures over some samples. One that was not asked for is absent, and so is one that no sample has anything to say
/// of: that nothing was measured is not the same as zero.
struct QZHKFigures {
  std::optional<double> sum;
  std::optional<double> average;
  std::optional<double> minimum;
  std::optional<double> maximum;
  std::optional<double> mostRecent;
  std::optional<Moment> mostRecentEnd;  ///< when the sample of the most recent amount ended
  std::optional<std::chrono::microseconds> duration;

  friend bool operator==(const QZHKFigures&, const QZHKFigures&) = default;
};

/// What a statistics query answers.
struct QZHKStatistics {
  QZHKUnit unit = QZHKUnit::count;              ///< of all figures but the duration
  QZHKFigures figures;                          ///< of all sources together
  std::map<std::string, QZHKFigures> bySource;  ///< of each source by itself; empty unless asked for

  friend bool operator==(const QZHKStatistics&, const QZHKStatistics&) = default;
};

/// The answer to a query from a list of samples: those that match are taken, in whatever order they come.
///
/// - The sum counts once what several sources measured at the same time: a phone and a watch that both count the steps
///   of one walk. The source with the greater sum goes first (of equal ones, the first by name); a sample of another is
///   left out of the sum when it overlaps one that is in it. What people enter themselves (origin(type)) all counts,
///   and so do all samples in the figures of a single source.
/// - A sample without an amount counts one in a sum; a workout adds its energy or distance in such a unit, and nothing
///   where it was not measured.
/// - Amounts are added in the unit they came in and converted after that, without the errors of rounding that adding up
///   brings: ten times 100 mL make 1 L, and so do ten times 0.1 L.
/// - The mean takes each sample once, however long it lasted.
/// - The most recent sample is the one that ended last; of several, the one that also started last.
///
/// Throws QZHealthStoreError (`invalidQuery`) where problem(query) says why.
/// REQUIRES: no sample that matches has a problem().
[[nodiscard]] QZHKStatistics statistics(std::span<const QZHKSample> samples, const QZHKStatisticsQuery& query);

}  // namespace qz
