#pragma once

#include <QZKit/Clock.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qz {

class ZoneRules;

/// A time zone by its identifier ("Europe/Berlin"), with the rules of the system's own zone files.
///
/// A handle the size of a pointer: copying is free, and a zone once read is kept for the life of the process. Two zones
/// are equal when their identifiers are: "Asia/Calcutta" and "Asia/Kolkata" differ though their clocks agree. All
/// functions may be called from any thread.
class TimeZone {
 public:
  /// The zone of that name; none when the system has no such zone file. Names are those of the zone database, in their
  /// own case; "UTC" always exists. Never a path: "..", a leading "/", and the entries that are no zones
  /// ("localtime", "posixrules", "right/...", which counts leap seconds) are unknown.
  [[nodiscard]] static std::optional<TimeZone> fromIdentifier(std::string_view identifier);

  /// The zone of this process: the one that TZ names; else the target of the link /etc/localtime; else the name in
  /// /etc/timezone; else UTC. Asked anew at each call, since a machine can travel.
  [[nodiscard]] static TimeZone current();

  [[nodiscard]] static TimeZone utc();

  [[nodiscard]] const std::string& identifier() const;

  /// What wall clocks in this zone are ahead of UTC at that moment; negative west of Greenwich.
  [[nodiscard]] std::chrono::seconds offset(Moment date) const;

  friend bool operator==(const TimeZone&, const TimeZone&) = default;

 private:
  friend class Calendar;
  friend class ZoneRules;
  friend struct std::hash<TimeZone>;
  explicit TimeZone(const ZoneRules* rules) : rules_(rules) {}

  const ZoneRules* rules_;  // one per identifier, never freed
};

}  // namespace qz

template <>
struct std::hash<qz::TimeZone> {
  std::size_t operator()(const qz::TimeZone& zone) const noexcept {
    return std::hash<const void*>()(static_cast<const void*>(zone.rules_));
  }
};
