#pragma once

#include <HabitraCore/HistoryWalk.h>

#include <cstdint>
#include <iosfwd>
#include <vector>

/// Histories out of thin air, for properties that hold of all of them. To be called within a property.
namespace habitra {

struct History {
  TaskRules rules;
  HistoryScope scope;
  std::vector<LoggedEntry> log;

  [[nodiscard]] HistoryWalk walk() const { return HistoryWalk(rules, scope); }
  [[nodiscard]] HistoryResult result() const { return walk().walk(log); }
  /// Adds entries that were filled in, each on the last day of its period, and keeps the log in order.
  void write(const std::vector<FillIn>& fillIns);
};

/// The whole of it, for a counterexample.
std::ostream& operator<<(std::ostream& out, const History& history);

[[nodiscard]] std::int32_t integer(const qz::YYYYMMDD& day);

[[nodiscard]] TaskFrequency someFrequency();
[[nodiscard]] TaskMeasure someMeasure();

/// Any rules, and any entries at all in any order of creation: holes, stored periods of older frequencies and such that
/// overlap, days that no calendar has, pauses. Of full length from the first run on.
[[nodiscard]] History someHistory();
[[nodiscard]] LoggedEntry someEntry(const History& history);

/// As the recorder leaves a log: per period a few partial entries or one full entry, each with the period of the
/// frequency.
[[nodiscard]] History someRecordedHistory();

}  // namespace habitra
