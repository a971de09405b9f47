#pragma once

#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKStatistics.h>
#include <QZHealthKit/QZHKStretchSum.h>

#include <chrono>
#include <optional>

namespace qz {

/// Works figures out over samples that are handed over one after the other, so that a history need not be held to be
/// summed up. What the figures are says QZHKStatistics.
///
///     QZHKStatisticsCalculation calculation(query);
///     for (const QZHKSample& sample : samples) calculation.add(sample);
///     return calculation.figures();
///
/// Belongs to one thread.
class QZHKStatisticsCalculation {
 public:
  /// REQUIRES: no problem(query).
  explicit QZHKStatisticsCalculation(const QZHKStatisticsQuery& query);

  /// Takes the next sample; one that the query does not match is passed over. REQUIRES: no problem(sample), and it does
  /// not start before the one before.
  void add(const QZHKSample& sample);

  [[nodiscard]] QZHKStatistics figures() const;

 private:
  /// The sample that the most recent amount is of.
  struct Recent {
    Moment end;
    Moment start;
    UniqueID identifier;
    double amount;

    [[nodiscard]] bool isBefore(const QZHKSample& sample) const;
  };

  void addToSum(const QZHKSample& sample);
  void addToExtremes(double amount);
  void addToDuration(const QZHKSample& sample);

  QZHKStatisticsQuery query_;
  bool addsAllUp_;       // whichever source it is from
  bool hasSum_ = false;  // some sample had something to say
  long double sum_ = 0;  // of all sources
  QZHKStretchSum stretches_;
  std::optional<double> minimum_;
  std::optional<double> maximum_;
  std::optional<Recent> recent_;
  std::optional<std::chrono::microseconds> duration_;
  Moment coveredUntil_;
};

}  // namespace qz
