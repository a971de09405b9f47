#pragma once

#include <QZHealthKit/QZHKUnit.h>
#include <QZKit/Clock.h>

#include <chrono>
#include <optional>

namespace qz {

/// Figures over the samples that a query matches. One that was not asked for is absent, and so is one of which no
/// sample has anything to say: that nothing was measured is not the same as zero. Every store answers by these rules.
///
/// The sum. A sample that lies only partly in the span adds the share of its amount that falls to the share of its time
/// in the span; one without length adds all of it where its moment lies. What has no amount adds one where it starts,
/// and nothing to a span that it only reaches into. A workout is such a thing in `count`; in a unit of energy or of
/// length it adds what it took, like an amount, and nothing where that was not measured.
///
/// What people enter (origin()) all adds up. Of what is measured, what several sources measured at the same time counts
/// once: a phone and a watch that both count the steps of one walk. To tell, the span is cut at every quarter of an
/// hour since 1970-01-01T00:00:00Z, and in each of these stretches the source that adds most stands, alone, with all of
/// its samples. The stretch is what makes two records of one thing meet: clocks that differ by seconds, a total of a
/// moment beside another source's walk of minutes, long samples beside short ones. What has no length, or counts one
/// where it starts, can still fall to both sides of a cut and count twice; and what two sources recorded within one
/// stretch counts as one thing, though it may have been two.
///
/// So one more sample never lowers a sum; the sum is no less than that of any source by itself, and no more than those
/// of all sources together; and the sums of two spans that meet at a whole quarter of an hour, as days do that begin at
/// one in any zone of today, add up to that of both, but for the rounding of doubles. Where several sources measured in
/// a quarter of an hour that is cut, each of its parts is judged by itself, and the two may come to more than the
/// whole.
///
/// The duration is the time of the span that some sample covers, whichever source it is of: what several cover counts
/// once, and a sample without length covers none: where there are only such, it is zero.
///
/// Least, greatest and most recent take each sample with its whole amount, however little of it lies in the span. The
/// most recent sample is the one that ended last; of several, the one that started last, and of those the one with the
/// greatest identifier.
struct QZHKStatistics {
  QZHKUnit unit = QZHKUnit::count;  ///< of all figures but the duration
  std::optional<double> sum;
  std::optional<double> minimum;
  std::optional<double> maximum;
  std::optional<double> mostRecent;
  std::optional<Moment> mostRecentEnd;  ///< when that sample ended, which may be after the span
  std::optional<std::chrono::microseconds> duration;

  friend bool operator==(const QZHKStatistics&, const QZHKStatistics&) = default;
};

}  // namespace qz
