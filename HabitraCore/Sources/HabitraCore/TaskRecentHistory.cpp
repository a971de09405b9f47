#include <HabitraCore/TaskRecentHistory.h>
#include <QZDateTime/YYYYMM.h>

#include <algorithm>

namespace habitra {

namespace {

/// The day after the same day that many months earlier, which is cut to the end of its month.
qz::YYYYMMDD firstDayOfMonths(std::int64_t numMonths, const qz::YYYYMMDD& today) {
  const qz::YYYYMM month = today.yyyymm().add(-numMonths);
  return qz::YYYYMMDD(month.y(), month.m(), std::min(today.d(), month.numberOfDays())).nextDay();
}

}  // namespace

SuccessSpans successSpans(const TaskFrequency& frequency) {
  using Span = TaskRecentHistory::PreviousSuccessType;
  switch (frequency.measurementDuration()) {
    case TaskFrequencyPeriodType::day: break;
    case TaskFrequencyPeriodType::week:
    case TaskFrequencyPeriodType::fortnight: return {Span::pastMonth, Span::pastYear};
    case TaskFrequencyPeriodType::month: return {Span::pastYear, Span::allTime};
    case TaskFrequencyPeriodType::year: return {Span::allTime, Span::allTime};
  }
  return {Span::last7, Span::last30};
}

std::optional<qz::YYYYMMDD> firstDay(TaskRecentHistory::PreviousSuccessType span, const qz::YYYYMMDD& today) {
  using Span = TaskRecentHistory::PreviousSuccessType;
  switch (span) {
    case Span::last7: return today.add(-6);
    case Span::last30: return today.add(-29);
    case Span::pastMonth: return firstDayOfMonths(1, today);
    case Span::pastYear: return firstDayOfMonths(12, today);
    case Span::allTime: break;
  }
  return std::nullopt;
}

std::optional<qz::YYYYMMDD> firstSampledDay(const TaskFrequency& frequency, const qz::YYYYMMDD& today) {
  const SuccessSpans spans = successSpans(frequency);
  const auto shortTerm = firstDay(spans.shortTerm, today);
  const auto longTerm = firstDay(spans.longTerm, today);
  return shortTerm && longTerm ? std::min(shortTerm, longTerm) : shortTerm ? shortTerm : longTerm;
}

}  // namespace habitra
