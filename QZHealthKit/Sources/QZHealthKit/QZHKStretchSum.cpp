#include <QZHealthKit/QZHKStretchSum.h>

#include <algorithm>
#include <chrono>

namespace qz {

namespace {

using Stretches = std::chrono::duration<std::int64_t, std::ratio<15L * 60>>;

std::int64_t numberOfStretch(Moment moment) { return std::chrono::floor<Stretches>(moment.time_since_epoch()).count(); }

Moment beginning(std::int64_t stretch) { return Moment(Stretches(stretch)); }

long double greatest(const std::map<std::size_t, long double>& amounts) {
  long double found = 0;
  for (const auto& [source, amount] : amounts) found = std::max(found, amount);
  return found;
}

}  // namespace

void QZHKStretchSum::add(const std::string& source, Moment from, Moment to, long double amount) {
  const std::int64_t first = numberOfStretch(from);
  closeBefore(first);
  const std::size_t number = numberOf(source);
  if (to <= beginning(first + 1)) {
    stretch(first)[number] += amount;
    return;
  }
  const auto length = static_cast<long double>((to - from).count());
  for (std::int64_t at = first; beginning(at) < to; ++at) {
    const auto shared = std::min(to, beginning(at + 1)) - std::max(from, beginning(at));
    stretch(at)[number] += amount * static_cast<long double>(shared.count()) / length;
  }
}

double QZHKStretchSum::sum() const {
  long double sum = closed_;
  for (const AmountsBySource& amounts : open_) sum += greatest(amounts);
  return static_cast<double>(sum);
}

std::size_t QZHKStretchSum::numberOf(const std::string& source) {
  return sources_.try_emplace(source, sources_.size()).first->second;
}

QZHKStretchSum::AmountsBySource& QZHKStretchSum::stretch(std::int64_t number) {
  const auto index = static_cast<std::size_t>(number - firstOpen_);
  if (index >= open_.size()) open_.resize(index + 1);
  return open_[index];
}

void QZHKStretchSum::closeBefore(std::int64_t number) {
  while (!open_.empty() && firstOpen_ < number) {
    closed_ += greatest(open_.front());
    open_.pop_front();
    ++firstOpen_;
  }
  if (open_.empty()) firstOpen_ = number;
}

}  // namespace qz
