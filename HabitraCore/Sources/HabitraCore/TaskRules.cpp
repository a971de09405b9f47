#include <HabitraCore/TaskRules.h>

#include <bit>

namespace habitra {

namespace {

/// Raised whenever the walk comes to another result for the same rules and entries, so that what was kept is dropped.
constexpr std::uint64_t walkVersion = 2;

/// FNV-1a over the eight bytes of each number, lowest first, whatever the machine's order.
class Fingerprint {
 public:
  void add(std::uint64_t number) {
    for (int byte = 0; byte < 8; ++byte) {
      hash_ = (hash_ ^ (number & 0xff)) * 0x100000001b3u;
      number >>= 8;
    }
  }
  void add(std::int64_t number) { add(static_cast<std::uint64_t>(number)); }
  [[nodiscard]] std::uint64_t value() const { return hash_; }

 private:
  std::uint64_t hash_ = 0xcbf29ce484222325u;
};

}  // namespace

std::uint64_t fingerprint(const TaskRules& rules, const qz::YYYYMMDD& created) {
  Fingerprint fingerprint;
  fingerprint.add(walkVersion);
  fingerprint.add(std::int64_t{rawValue(rules.frequency.dayMode)});
  fingerprint.add(std::int64_t{rules.frequency.days.rawValue()});
  fingerprint.add(rules.frequency.daysOfMonth.rawValue());
  fingerprint.add(rules.frequency.numPartialCompletions);
  fingerprint.add(rules.frequency.numCompletions);
  fingerprint.add(rules.frequency.dayInterval);
  fingerprint.add(std::int64_t{rules.isNegative ? 1 : 0});
  fingerprint.add(rules.firstDayOfWeek.rawValue());
  fingerprint.add(rules.referenceDate ? rules.referenceDate->rawValue() : 0);
  fingerprint.add(static_cast<std::int64_t>(rules.measure.kind));
  fingerprint.add(std::bit_cast<std::uint64_t>(rules.measure.target));
  fingerprint.add(std::uint64_t{rules.pauses.size()});
  for (const TaskPause& pause : rules.pauses) {
    fingerprint.add(pause.from.rawValue());
    fingerprint.add(pause.to ? pause.to->rawValue() : 0);
  }
  fingerprint.add(created.rawValue());
  return fingerprint.value();
}

}  // namespace habitra
