#include <QZHealthKit/QZHealthStoreError.h>
#include <QZHealthKit/QZHKCoveredTime.h>
#include <QZHealthKit/QZHKStatistics.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

namespace qz {

namespace {

using Samples = std::vector<const QZHKSample*>;

/// A sum that carries what rounding took off each step and gives it back at the end.
class CompensatedSum {
 public:
  void add(double value) {
    const double next = sum_ + value;
    lost_ += std::abs(sum_) >= std::abs(value) ? (sum_ - next) + value : (value - next) + sum_;
    sum_ = next;
  }
  [[nodiscard]] double value() const { return sum_ + lost_; }

 private:
  double sum_ = 0;
  double lost_ = 0;
};

double valueOf(const QZHKQuantity& quantity, QZHKUnit unit) {
  const auto value = quantity.valueIn(unit);
  require(value.has_value(), "a sample is in a unit that does not measure its type");
  return *value;
}

/// REQUIRES: the sample is a quantity's.
double valueOf(const QZHKSample& sample, QZHKUnit unit) {
  const auto quantity = sample.quantity();
  require(quantity.has_value(), "a sample has no amount");
  return valueOf(*quantity, unit);
}

/// None when no sample has a contribution.
std::optional<double> sumOf(const Samples& samples, QZHKUnit unit) {
  std::map<QZHKUnit, CompensatedSum> sums;
  for (const QZHKSample* sample : samples) {
    if (const auto amount = sample->contribution(unit)) sums[amount->unit].add(amount->value);
  }
  if (sums.empty()) return std::nullopt;
  CompensatedSum all;
  for (const auto& [from, sum] : sums) all.add(valueOf(QZHKQuantity{sum.value(), from}, unit));
  return all.value();
}

/// Temperatures of two scales cannot be added before they are converted.
double averageOf(const Samples& samples, QZHKUnit unit) {
  CompensatedSum sum;
  for (const QZHKSample* sample : samples) sum.add(valueOf(*sample, unit));
  return sum.value() / static_cast<double>(samples.size());
}

/// The samples that contribute to a sum, without those that overlap what a source with a greater sum measured.
Samples countedOnce(const std::map<std::string, Samples>& bySource, QZHKUnit unit) {
  std::vector<std::pair<double, const Samples*>> sources;
  for (const auto& [name, samples] : bySource) sources.emplace_back(sumOf(samples, unit).value_or(0), &samples);
  std::stable_sort(sources.begin(), sources.end(), [](const auto& a, const auto& b) { return a.first > b.first; });

  QZHKCoveredTime covered;
  Samples counted;
  for (const auto& [sum, samples] : sources) {
    const auto begin = static_cast<std::ptrdiff_t>(counted.size());
    std::copy_if(samples->begin(), samples->end(), std::back_inserter(counted), [&](const QZHKSample* sample) {
      return sample->contribution(unit) && !covered.overlaps(sample->start, sample->end);
    });
    // Only now, since the samples of one source do not shut each other out.
    std::for_each(counted.begin() + begin, counted.end(),
                  [&](const QZHKSample* sample) { covered.insert(sample->start, sample->end); });
  }
  return counted;
}

std::chrono::microseconds durationOf(const Samples& samples) {
  QZHKCoveredTime covered;
  for (const QZHKSample* sample : samples) covered.insert(sample->start, sample->end);
  return covered.total();
}

const QZHKSample& mostRecentOf(const Samples& samples) {
  return **std::max_element(samples.begin(), samples.end(), [](const QZHKSample* a, const QZHKSample* b) {
    return std::tie(a->end, a->start, a->identifier) < std::tie(b->end, b->start, b->identifier);
  });
}

/// All figures but the sum. REQUIRES: there is a sample.
QZHKFigures figuresOf(const Samples& samples, const QZHKStatisticsQuery& query) {
  using enum QZHKStatisticsOption;
  const QZHKStatisticsOptions options = query.options;
  const auto value = [&](const QZHKSample* sample) { return valueOf(*sample, query.unit); };
  const auto isLess = [&](const QZHKSample* a, const QZHKSample* b) { return value(a) < value(b); };
  QZHKFigures figures;
  if (options.contains(discreteAverage)) figures.average = averageOf(samples, query.unit);
  if (options.contains(discreteMin)) figures.minimum = value(*std::ranges::min_element(samples, isLess));
  if (options.contains(discreteMax)) figures.maximum = value(*std::ranges::max_element(samples, isLess));
  if (options.contains(duration)) figures.duration = durationOf(samples);
  if (options.contains(mostRecent)) {
    const QZHKSample& sample = mostRecentOf(samples);
    figures.mostRecent = value(&sample);
    figures.mostRecentEnd = sample.end;
  }
  return figures;
}

/// The samples that match, in an order that does not depend on the list's, so that sums round alike.
Samples matching(std::span<const QZHKSample> samples, const QZHKSampleQuery& query) {
  Samples found;
  for (const QZHKSample& sample : samples) {
    if (query.matches(sample)) found.push_back(&sample);
  }
  std::sort(found.begin(), found.end(), [](const QZHKSample* a, const QZHKSample* b) {
    return std::tie(a->start, a->identifier) < std::tie(b->start, b->identifier);
  });
  return found;
}

}  // namespace

QZHKStatistics statistics(std::span<const QZHKSample> samples, const QZHKStatisticsQuery& query) {
  using enum QZHKStatisticsOption;
  if (const auto reason = problem(query)) throw QZHealthStoreError(QZHealthStoreError::Reason::invalidQuery, *reason);

  QZHKStatistics answer{.unit = query.unit, .figures = {}, .bySource = {}};
  const Samples found = matching(samples, query.samples);
  if (found.empty()) return answer;
  std::map<std::string, Samples> bySource;
  for (const QZHKSample* sample : found) bySource[sample->source].push_back(sample);

  answer.figures = figuresOf(found, query);
  if (query.options.contains(cumulativeSum)) {
    const bool allCount = origin(query.samples.objectType) == QZHKOrigin::entered;
    answer.figures.sum = sumOf(allCount ? found : countedOnce(bySource, query.unit), query.unit);
  }
  if (query.options.contains(separateBySource)) {
    for (const auto& [source, own] : bySource) {
      QZHKFigures& figures = answer.bySource[source];
      figures = figuresOf(own, query);
      if (query.options.contains(cumulativeSum)) figures.sum = sumOf(own, query.unit);
    }
  }
  return answer;
}

}  // namespace qz
