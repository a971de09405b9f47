#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <QZDateTime/YYYYMMDD.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>
#include <vector>

namespace habitra {

/// Why a period has the status it has: the rule, its numbers, and the entries that decided. Enough for a sentence such
/// as "Miss: 2 of 3 this week, and only today was left", and for a program to check it. Coded with the field names as
/// keys; what a rule does not use is an absent key.
struct PeriodReason {
  /// What the status rests on.
  enum class Ground : std::uint8_t {
    fullEntry,           ///< an entry for the whole period says so, and the rules of today do not say it
    partialEntries,      ///< partial entries reached what the period needs
    keptClean,           ///< to avoid: nothing failed it
    due,                 ///< it was due and nothing completed it: a miss, or will be one
    notDue,              ///< the rule did not ask for it: a skip, or will be one
    paused,              ///< the task rested
    beganBeforeHistory,  ///< a longer period of which the first days came before the task
    cutShort,            ///< a part of a longer period; stored periods have the rest of it
  };

  /// An entry that had a part in it.
  struct Entry {
    qz::YYYYMMDD date;
    TaskLogEntryType entryType{};
    std::int64_t order = 0;  ///< LoggedEntry::order

    friend bool operator==(const Entry&, const Entry&) = default;
  };

  TaskFrequencyPeriod period;
  CompletionStatus::Status status = CompletionStatus::Status::positiveSkip();
  Ground ground = Ground::due;
  TaskFrequency::DayMode dayMode = TaskFrequency::DayMode::specificDaysOfWeek;  ///< the rule
  bool isOpen = false;                                                          ///< it holds today

  /// Partial entries' worth that the period itself has, and that it needs.
  std::int64_t numUnits = 0;
  std::int64_t expectedUnits = 1;

  /// Counted-days modes: the period over which days are counted.
  std::optional<TaskFrequencyPeriod> countingPeriod;
  // The same, to do, as things stood on the morning of the day that is asked about:
  std::optional<std::int64_t> completed;      ///< completed days of the counting period before the day
  std::optional<std::int64_t> wanted;         ///< the task's number, cut to its share in the period it was made in
  std::optional<std::int64_t> available;      ///< days of the counting period that were there to be used
  std::optional<std::int64_t> required;       ///< the smaller of these two
  std::optional<std::int64_t> stillPossible;  ///< days of the counting period after the day

  /// To avoid, counted days: failures that the counting period allows, and how many of them were left for the day.
  std::optional<std::int64_t> allowance;
  std::optional<std::int64_t> allowanceLeft;

  /// Day intervals: the day from which days are counted (the last completed or failed one before, or the anchor), and
  /// how many have passed since. Absent where there is none before the day.
  std::optional<qz::YYYYMMDD> countedFrom;
  std::optional<std::int64_t> daysSince;

  /// In order of creation those of the period; before them, in counted-days modes, the entries by which earlier days of
  /// the counting period were completed or failed.
  std::vector<Entry> entries;

  friend bool operator==(const PeriodReason&, const PeriodReason&) = default;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::PeriodReason::Ground> {
  using T = habitra::PeriodReason::Ground;
  static constexpr std::array<RawValueRow<T, std::string_view>, 8> rows{{
      {T::fullEntry, "fullEntry", "fullEntry"},
      {T::partialEntries, "partialEntries", "partialEntries"},
      {T::keptClean, "keptClean", "keptClean"},
      {T::due, "due", "due"},
      {T::notDue, "notDue", "notDue"},
      {T::paused, "paused", "paused"},
      {T::beganBeforeHistory, "beganBeforeHistory", "beganBeforeHistory"},
      {T::cutShort, "cutShort", "cutShort"},
  }};
};

namespace habitra {

void to_json(nlohmann::json& json, const PeriodReason::Entry& entry);
void from_json(const nlohmann::json& json, PeriodReason::Entry& entry);
void to_json(nlohmann::json& json, const PeriodReason& reason);
/// Throws qz::DecodingError for an unknown raw value, a missing key or a value of the wrong kind.
void from_json(const nlohmann::json& json, PeriodReason& reason);

}  // namespace habitra
