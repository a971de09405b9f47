#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/EmptyDays.h>

#include <algorithm>

namespace habitra {
namespace {

constexpr std::int64_t mostDaysAhead = 512;

}  // namespace

bool EmptyDays::hold(qz::YYYYMMDD first, qz::YYYYMMDD last) {
  if (known_ && known_->first <= first && last <= known_->last) return true;
  // Where the empty days went on until here they may go on; in vain this costs no more than the run that led here.
  const bool goesOn = known_ && known_->last.nextDay() >= first && known_->last < last;
  daysAhead_ = goesOn ? std::min(2 * daysAhead_ + 1, mostDaysAhead) : 0;
  const Span ahead{first, std::min(last.add(daysAhead_), std::max(last, latestKeptDay))};
  if (isEmpty(ahead)) {
    known_ = ahead;
    return true;
  }
  known_.reset();
  if (daysAhead_ > 0 && isEmpty({first, last})) known_ = Span{first, last};
  daysAhead_ = 0;
  return known_.has_value();
}

void EmptyDays::endAt(qz::YYYYMMDD day) {
  if (known_) known_->first = std::max(known_->first, day.nextDay());
}

bool EmptyDays::isEmpty(const Span& span) {
  bool isEmpty = true;
  context_.readLog(task_, storedDay(span.first), storedDay(span.last), [&](const LogRow&) { isEmpty = false; });
  return isEmpty;
}

}  // namespace habitra
