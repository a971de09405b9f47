#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <absl/time/time.h>

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
  [[nodiscard]] Span span(Moment date) const;

  /// The moment at which clocks show that date and time: the first after a jump over it, the first of two.
  [[nodiscard]] Moment date(const YYYYMMDD& day, const HHMMSS& time) const;

 private:
  std::string identifier_;
  absl::TimeZone zone_;
};

}  // namespace qz
