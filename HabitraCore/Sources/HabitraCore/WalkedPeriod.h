#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/PeriodReason.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskMeasure.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace habitra {

class DueRule;
struct TaskRules;

/// How a period counts in the shares of success.
enum class PeriodVerdict : std::uint8_t {
  notJudged,  ///< skipped, allowed or undecided
  failure,
  success,
};

/// A period as the walk passes it. Valid during the visit; the larger values are built when they are asked for.
struct WalkedPeriod {
  std::int32_t from = 0;         ///< first day, integer form
  std::int32_t to = 0;           ///< last day
  std::int32_t progressDay = 0;  ///< the last day, in the open period today
  TaskFrequencyPeriodType periodType{};
  CompletionStatus::Status status = CompletionStatus::Status::positiveSkip();
  ProgressMade progress;
  std::int64_t expectedUnits = 1;  ///< partial entries that the period needs
  StreakStatus streak;             ///< after this period
  PeriodVerdict verdict = PeriodVerdict::notJudged;
  bool isDue = false;                      ///< the rules ask for it: to do, it is a miss when nothing completes it
  bool isPaused = false;                   ///< the task rests on a day of it
  bool isOpen = false;                     ///< it holds today
  bool hasFull = false;                    ///< a full entry decided it, filled in or not
  bool hasSkip = false;                    ///< a skip is among its entries
  bool missIsAllowed = false;              ///< to avoid: a failure of this period is one within the allowance
  std::optional<TaskLogEntryType> fillIn;  ///< the entry that has to be written for it
  std::span<const LoggedEntry> entries;    ///< that count for it, in order of creation, without the one to write

  [[nodiscard]] TaskFrequencyPeriod period() const;
  [[nodiscard]] CompletionStatus completionStatus() const;
  /// Whether a partial miss is among its entries.
  [[nodiscard]] bool holdsPartialMiss() const;
  /// Why it has its status.
  [[nodiscard]] PeriodReason reason() const;

  /// For the walk: where the values above come from.
  struct Source {
    const TaskRules* rules = nullptr;
    const DueRule* due = nullptr;                 ///< as it stood before this period was counted
    std::span<const LoggedEntry> countedEntries;  ///< of the counting period, before this one
    bool isCut = false;                           ///< a longer period that began before the history did
    bool isShortened = false;                     ///< a longer period that stored ones left only a part of
    bool isUnavailable = false;                   ///< to do: a day that was skipped by hand or paused
    std::int32_t number = 0;                      ///< day number of a period of one day
  } source;
};

using PeriodVisitor = std::function<void(const WalkedPeriod&)>;

}  // namespace habitra
