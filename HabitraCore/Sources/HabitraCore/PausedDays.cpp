#include <HabitraCore/DayForms.h>
#include <HabitraCore/PausedDays.h>

#include <algorithm>
#include <limits>

namespace habitra {

namespace {

constexpr std::int32_t endOfTime = std::numeric_limits<std::int32_t>::max();

}  // namespace

PausedDays::PausedDays(std::span<const TaskPause> pauses) {
  spans_.reserve(pauses.size() + 1);
  for (const TaskPause& pause : pauses) {
    const Span span{numberOf(pause.from), pause.to ? numberOf(*pause.to) : endOfTime - 1};
    if (span.first <= span.last) spans_.push_back(span);
  }
  std::ranges::sort(spans_, {}, &Span::first);
  std::size_t kept = 0;
  for (const Span& span : spans_) {
    if (kept != 0 && span.first <= spans_[kept - 1].last + 1) {
      spans_[kept - 1].last = std::max(spans_[kept - 1].last, span.last);
    } else {
      spans_[kept++] = span;
    }
  }
  spans_.resize(kept);
  spans_.push_back({endOfTime, endOfTime});
}

std::int32_t PausedDays::count(std::int32_t first, std::int32_t last) const {
  std::int32_t days = 0;
  auto span = std::ranges::lower_bound(spans_, first, {}, &Span::last);
  for (; span->first <= last; ++span) days += std::min(span->last, last) - std::max(span->first, first) + 1;
  return days;
}

}  // namespace habitra
