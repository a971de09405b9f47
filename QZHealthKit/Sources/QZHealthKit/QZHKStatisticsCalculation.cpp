#include <QZHealthKit/QZHKStatisticsCalculation.h>

#include <QZKit/Trap.h>

#include <algorithm>
#include <tuple>

namespace qz {

namespace {

using Option = QZHKStatisticsOption;

std::optional<double> valueIn(const std::optional<QZHKQuantity>& quantity, QZHKUnit unit) {
  return quantity ? quantity->valueIn(unit) : std::nullopt;
}

/// What is spread over the time of a sample, in the unit; none where the sample counts one at its start, or was not
/// measured.
std::optional<double> spreadAmount(const QZHKSample& sample, QZHKUnit unit) {
  const auto workout = sample.workout();
  if (!workout) return valueIn(sample.quantity(), unit);
  return valueIn(dimension(unit) == QZHKDimension::energy ? workout->energy : workout->distance, unit);
}

bool isCounted(const QZHKSample& sample, QZHKUnit unit) {
  return kind(sample.objectType) != QZHKObjectKind::quantity && unit == QZHKUnit::count;
}

}  // namespace

QZHKStatisticsCalculation::QZHKStatisticsCalculation(const QZHKStatisticsQuery& query)
    : query_(query),
      addsAllUp_(origin(query.samples.objectType) == QZHKOrigin::entered),
      coveredUntil_(query.samples.span.from) {
  require(!problem(query), "figures that a type has not are worked out");
}

void QZHKStatisticsCalculation::add(const QZHKSample& sample) {
  if (!query_.samples.matches(sample)) return;
  const QZHKStatisticsOptions options = query_.options;
  if (options.contains(Option::cumulativeSum)) addToSum(sample);
  if (options.contains(Option::duration)) addToDuration(sample);
  const auto amount = valueIn(sample.quantity(), query_.unit);
  if (!amount) return;
  addToExtremes(*amount);
  if (options.contains(Option::mostRecent) && (!recent_ || recent_->isBefore(sample)))
    recent_ = Recent{sample.end, sample.start, sample.identifier, *amount};
}

QZHKStatistics QZHKStatisticsCalculation::figures() const {
  QZHKStatistics figures{.unit = query_.unit};
  if (hasSum_) figures.sum = addsAllUp_ ? static_cast<double>(sum_) : stretches_.sum();
  if (query_.options.contains(Option::discreteMin)) figures.minimum = minimum_;
  if (query_.options.contains(Option::discreteMax)) figures.maximum = maximum_;
  if (recent_) {
    figures.mostRecent = recent_->amount;
    figures.mostRecentEnd = recent_->end;
  }
  figures.duration = duration_;
  return figures;
}

bool QZHKStatisticsCalculation::Recent::isBefore(const QZHKSample& sample) const {
  return std::tie(end, start, identifier) < std::tie(sample.end, sample.start, sample.identifier);
}

void QZHKStatisticsCalculation::addToSum(const QZHKSample& sample) {
  const QZHKSpan& span = query_.samples.span;
  Moment from = std::max(sample.start, span.from);
  Moment to = std::min(sample.end, span.to);
  long double amount = 1;
  if (isCounted(sample, query_.unit)) {
    if (!span.contains(sample.start)) return;
    to = from;
  } else {
    const auto whole = spreadAmount(sample, query_.unit);
    if (!whole) return;
    amount = *whole;
    if (to - from < sample.end - sample.start)
      amount *=
          static_cast<long double>((to - from).count()) / static_cast<long double>((sample.end - sample.start).count());
  }
  hasSum_ = true;
  if (addsAllUp_)
    sum_ += amount;
  else
    stretches_.add(sample.source, from, to, amount);
}

void QZHKStatisticsCalculation::addToExtremes(double amount) {
  minimum_ = std::min(minimum_.value_or(amount), amount);
  maximum_ = std::max(maximum_.value_or(amount), amount);
}

void QZHKStatisticsCalculation::addToDuration(const QZHKSample& sample) {
  const Moment to = std::min(sample.end, query_.samples.span.to);
  if (!duration_) duration_.emplace(0);
  if (to <= std::max(sample.start, coveredUntil_)) return;
  *duration_ += to - std::max(sample.start, coveredUntil_);
  coveredUntil_ = to;
}

}  // namespace qz
