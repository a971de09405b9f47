#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/HistoryWalk.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace habitra {

/// The numbers by which a day is judged; those that its rule does not use are absent.
struct NaiveNumbers {
  std::optional<qz::YYYYMMDD> countingFrom;
  std::optional<qz::YYYYMMDD> countingTo;
  std::optional<std::int64_t> completed;
  std::optional<std::int64_t> wanted;
  std::optional<std::int64_t> available;
  std::optional<std::int64_t> required;
  std::optional<std::int64_t> stillPossible;
  std::optional<std::int64_t> allowance;
  std::optional<std::int64_t> allowanceLeft;
  std::optional<qz::YYYYMMDD> countedFrom;
  std::optional<std::int64_t> daysSince;

  [[nodiscard]] std::string text() const;
};

struct NaiveProgress {
  std::int64_t units = 0;
  std::optional<double> amount;
  double secondsTimed = 0.0;
};

/// A period and, once it was judged, what it came to.
struct NaivePeriod {
  using Kind = CompletionStatus::Status::Kind;

  qz::YYYYMMDD from;
  qz::YYYYMMDD to;
  TaskFrequencyPeriodType type{};    ///< of a stored one
  bool isShortened = false;          ///< stored periods left only a part of a calendar period
  std::vector<LoggedEntry> entries;  ///< in order of creation; the one filled in comes last

  bool isOpen = false;
  bool isCut = false;  ///< it began before the history did
  bool isDue = false;
  bool missIsAllowed = false;
  bool hasGained = false;  ///< to avoid: the streak has its one for this period
  bool wasMended = false;  ///< to avoid: a completion made it clean again
  Kind kind{};
  NaiveProgress progress;
  std::optional<TaskLogEntryType> fillIn;
  std::optional<qz::YYYYMMDD> decidedOn;  ///< day of the entry that changed its status last
  StreakStatus streak;                    ///< after it
  PeriodVerdict verdict = PeriodVerdict::notJudged;
  NaiveNumbers numbers;

  [[nodiscard]] bool isDay() const { return from == to; }
  [[nodiscard]] bool contains(const qz::YYYYMMDD& day) const { return from <= day && day <= to; }
  [[nodiscard]] bool holds(bool (*is)(TaskLogEntryType)) const;
  /// The entryDate of the last entry of such a type.
  [[nodiscard]] std::optional<qz::YYYYMMDD> dayOfLast(bool (*is)(TaskLogEntryType)) const;
  /// Not completed, and the last full entry is a skip by hand.
  [[nodiscard]] bool isSkippedByHand() const;
  /// The one day that a completed, or failed, period counts as.
  [[nodiscard]] qz::YYYYMMDD countsOn() const;
};

/// The periods of a history from the one that holds `created` to the one that holds today, with their entries.
[[nodiscard]] std::vector<NaivePeriod> naivePeriods(const TaskRules& rules, const HistoryScope& scope,
                                                    std::span<const LoggedEntry> log);

}  // namespace habitra
