#include <HabitraModel/Health/ChangeSchedule.h>

#include <utility>

namespace habitra {

namespace {

std::chrono::hours between(qz::QZHKUpdateFrequency frequency) {
  using F = qz::QZHKUpdateFrequency;
  switch (frequency) {
    case F::immediate: return std::chrono::hours(0);
    case F::hourly: return std::chrono::hours(1);
    case F::daily: return std::chrono::days(1);
    case F::weekly: return std::chrono::weeks(1);
  }
  return std::chrono::hours(0);
}

}  // namespace

std::optional<ChangeSchedule::Time> ChangeSchedule::due() const {
  if (waiting_.empty()) return std::nullopt;
  return told_ ? *told_ + between(frequency_) : Time::min();
}

ChangeSchedule::Types ChangeSchedule::take(Time now) {
  told_ = now;
  return std::exchange(waiting_, {});
}

}  // namespace habitra
