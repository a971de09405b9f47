#include <QZDateTime/ZoneRules.h>
#include <QZKit/Checked.h>
#include <QZKit/Trap.h>

#include <absl/time/civil_time.h>

#include <algorithm>

namespace qz {
namespace {

absl::Time timeOf(Moment date) { return absl::FromUnixMicros(date.time_since_epoch().count()); }

Moment momentOf(absl::Time time) { return Moment(std::chrono::microseconds(absl::ToUnixMicros(time))); }

}  // namespace

std::int64_t ZoneRules::offset(Moment date) const { return zone_.At(timeOf(date)).offset; }

ZoneRules::Span ZoneRules::span(Moment date) const {
  const absl::Time time = timeOf(date);
  Span result{Moment::min(), endOfSpans, zone_.At(time).offset};
  absl::TimeZone::CivilTransition change;
  if (zone_.NextTransition(time, &change))
    result.until = std::min<Moment>(momentOf(zone_.At(change.to).trans), endOfSpans);
  // PrevTransition looks strictly before, at whole seconds, and a change at this very second begins the span.
  if (zone_.PrevTransition(time + absl::Seconds(1), &change)) result.from = momentOf(zone_.At(change.to).trans);
  return result;
}

Moment ZoneRules::date(const YYYYMMDD& day, const HHMMSS& time) const {
  const std::int64_t number = day.dayNumber();
  if (number < -momentDays || number > momentDays) trap("day outside the range of a moment", number);
  const YYYYMMDD date = YYYYMMDD::fromDayNumber(number);
  const absl::CivilSecond civil(date.y(), date.m(), date.d(), time.h(), time.m(), time.s());
  const absl::TimeZone::TimeInfo info = zone_.At(civil);
  return momentOf(info.kind == absl::TimeZone::TimeInfo::SKIPPED ? info.trans : info.pre);
}

}  // namespace qz
