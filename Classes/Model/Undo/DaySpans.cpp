#include <HabitraModel/Undo/DaySpans.h>

#include <algorithm>
#include <iterator>

namespace habitra {

void DaySpans::add(std::int32_t from, std::int32_t to) {
  if (from > to) return;
  auto span = ends_.upper_bound(to);
  while (span != ends_.begin() && std::prev(span)->second >= from) {
    span = std::prev(span);
    from = std::min(from, span->first);
    to = std::max(to, span->second);
    span = ends_.erase(span);
  }
  ends_.emplace(from, to);
}

bool DaySpans::overlaps(std::int32_t from, std::int32_t to) const {
  const auto after = ends_.upper_bound(to);
  return after != ends_.begin() && std::prev(after)->second >= from;
}

std::optional<std::int32_t> DaySpans::firstWithin(std::int32_t from, std::int32_t to) const {
  if (from <= to && contains(from)) return from;
  const auto next = ends_.lower_bound(from);
  return next != ends_.end() && next->first <= to ? std::optional(next->first) : std::nullopt;
}

}  // namespace habitra
