#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <absl/time/time.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace qz {

/// What stands behind a TimeZone: the rules read from one zone file. Immutable, one per identifier, never freed; may be
/// used from any thread. Kept inside the module, since it shows Abseil.
class ZoneRules {
 public:
  ZoneRules(std::string identifier, absl::TimeZone zone) : identifier_(std::move(identifier)), zone_(zone) {}

  [[nodiscard]] static const ZoneRules& of(const TimeZone& timeZone) { return *timeZone.rules_; }

  [[nodiscard]] const std::string& identifier() const { return identifier_; }

  /// Seconds ahead of UTC.
  [[nodiscard]] std::int64_t offset(Moment date) const;

  /// The span around a moment in which the offset stays: from <= date < until.
  struct Span {
    Moment from;
    Moment until;
    std::int64_t offset;
  };
  /// Ends at endOfSpans at the latest. REQUIRES: date < endOfSpans.
  [[nodiscard]] Span span(Moment date) const;

  /// From here on offsets can be asked for, but not where they change. Abseil lists the changes of a zone file and,
  /// where the file ends in a rule for all later years, those of 400 years more; behind its list it finds offsets by
  /// the calendar's cycle and knows of no next change. How far a list goes depends on the file (one that leaves out
  /// what its rule says ends decades earlier), but no zone has its last change before the 19th century, so none ends
  /// before 2200. A zone without such a rule keeps its last offset for ever. Nor is anything missing in the past:
  /// before its first change a zone has one offset, to the beginning of time.
  static constexpr Moment endOfSpans{std::chrono::sys_days(std::chrono::year(2200) / 1 / 1)};

  /// The days, by number, of which a Moment can tell every second in any zone: from -momentDays to momentDays, which is
  /// 2^63 microseconds, less two days for offsets.
  static constexpr std::int64_t momentDays =
      std::chrono::duration_cast<std::chrono::days>(Moment::duration::max()).count() - 2;

  /// The moment at which clocks show that date and time: the first after a jump over it, the first of two. Traps
  /// outside momentDays.
  [[nodiscard]] Moment date(const YYYYMMDD& day, const HHMMSS& time) const;

 private:
  std::string identifier_;
  absl::TimeZone zone_;
};

}  // namespace qz
