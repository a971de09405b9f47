#include <HabitraCore/AutomaticTaskType/ValueRange.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <cmath>

namespace habitra {

namespace {

/// A whole number of these, divided by 1,000, is rounded only once: to the double nearest to the decimal form.
std::int64_t thousandths(double value) { return std::llround(value * 1'000); }

std::int64_t lastIndex(const ValueRange& range) {
  qz::require(range.step >= 0.001 && 0 <= range.lowest && range.lowest <= range.highest && range.highest <= 1e9,
              "a range of values has no values");
  return (thousandths(range.highest) - thousandths(range.lowest)) / thousandths(range.step);
}

/// How many values of the range are at most `value`.
std::int64_t numValuesUpTo(const ValueRange& range, double value) {
  qz::require(std::isfinite(value), "a value in a range is not finite");
  const std::int64_t last = lastIndex(range);
  if (value < range.lowest) return 0;
  if (value >= range.at(last)) return last + 1;
  // The quotient can be one off where the value lies on a step.
  auto index = std::clamp(static_cast<std::int64_t>((value - range.lowest) / range.step), std::int64_t{0}, last);
  while (range.at(index) > value) --index;
  while (range.at(index + 1) <= value) ++index;
  return index + 1;
}

}  // namespace

std::int64_t ValueRange::count() const { return lastIndex(*this) + 1; }

double ValueRange::at(std::int64_t index) const {
  return static_cast<double>(thousandths(lowest) + index * thousandths(step)) / 1'000;
}

std::vector<double> ValueRange::values() const {
  std::vector<double> all;
  const std::int64_t size = count();
  all.reserve(static_cast<std::size_t>(size));
  for (std::int64_t index = 0; index < size; ++index) all.push_back(at(index));
  return all;
}

bool ValueRange::contains(double value) const { return std::isfinite(value) && nearest(value) == value; }

double ValueRange::nearest(double value) const {
  const std::int64_t below = numValuesUpTo(*this, value);
  if (below == 0) return lowest;
  if (below == count()) return at(below - 1);
  // Half-way is a matter of the decimal form as well: 0.15 lies between 0.1 and 0.2. A millionth is the error of
  // doubles.
  const double exact = value * 1'000;
  const double down = exact - static_cast<double>(thousandths(at(below - 1)));
  const double up = static_cast<double>(thousandths(at(below))) - exact;
  return at(down < up - 1e-3 ? below - 1 : below);
}

std::optional<double> ValueRange::next(double value) const {
  const std::int64_t below = numValuesUpTo(*this, value);
  return below < count() ? std::optional(at(below)) : std::nullopt;
}

std::optional<double> ValueRange::previous(double value) const {
  const std::int64_t below = numValuesUpTo(*this, value);
  if (below > 0 && at(below - 1) < value) return at(below - 1);
  return below > 1 ? std::optional(at(below - 2)) : std::nullopt;
}

}  // namespace habitra
