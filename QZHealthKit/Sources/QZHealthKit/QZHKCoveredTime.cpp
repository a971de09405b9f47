#include <QZHealthKit/QZHKCoveredTime.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <iterator>

namespace qz {

void QZHKCoveredTime::insert(Moment start, Moment end) {
  require(start <= end, "an interval ends before it starts");
  if (start == end) return;
  auto next = intervals_.upper_bound(start);
  if (next != intervals_.begin() && std::prev(next)->second >= start) --next;
  while (next != intervals_.end() && next->first <= end) {
    start = std::min(start, next->first);
    end = std::max(end, next->second);
    total_ -= next->second - next->first;
    next = intervals_.erase(next);
  }
  intervals_.emplace_hint(next, start, end);
  total_ += end - start;
}

bool QZHKCoveredTime::overlaps(Moment start, Moment end) const {
  require(start <= end, "an interval ends before it starts");
  if (start == end) return false;
  // Of the intervals that start before the end, the last one ends last.
  const auto after = intervals_.lower_bound(end);
  return after != intervals_.begin() && std::prev(after)->second > start;
}

}  // namespace qz
