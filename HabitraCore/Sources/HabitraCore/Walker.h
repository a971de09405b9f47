#pragma once

#include <HabitraCore/DayCursor.h>
#include <HabitraCore/DueRule.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/PausedDays.h>
#include <HabitraCore/PeriodJudging.h>

#include <cstdint>
#include <optional>
#include <span>

/// For sources of this module.
namespace habitra {

/// Judged periods of a span of days that ends today.
struct SuccessSample {
  std::int32_t from = 0;  ///< first day, integer form
  std::int64_t judged = 0;
  std::int64_t succeeded = 0;

  void take(std::int32_t lastDay, PeriodVerdict verdict) {
    if (lastDay < from || verdict == PeriodVerdict::notJudged) return;
    ++judged;
    if (verdict == PeriodVerdict::success) ++succeeded;
  }
};

/// One pass over a history. What is a template on the task's sign differs between the two families of statuses.
class Walker {
 public:
  /// `entries` in the order of LoggedEntries.
  Walker(const TaskRules& rules, const HistoryScope& scope, std::span<const LoggedEntry> entries,
         const PeriodVisitor& visit);

  void goOnFrom(const HistoryCheckpoint& checkpoint);
  [[nodiscard]] HistoryResult run();

 private:
  template <bool isNegative>
  void pass();
  void findPlainDays();
  [[nodiscard]] PeriodJudging nextPeriod();
  void cutLongerPeriod(PeriodJudging& judging) const;
  [[nodiscard]] bool passCompletedDays();

  template <bool isNegative>
  void judge(PeriodJudging& judging);
  template <bool isNegative>
  void begin(PeriodJudging& judging);
  void enterCountingPeriod(const DayCursor& day, const LoggedEntry* entries);
  template <bool isNegative>
  [[nodiscard]] std::optional<TaskLogEntryType> fillIn(PeriodJudging& judging);
  template <bool isNegative>
  void close(PeriodJudging& judging);
  [[nodiscard]] PeriodVerdict note(const PeriodJudging& judging, bool isOpen);
  template <bool isNegative>
  void count(const PeriodJudging& judging, PeriodVerdict verdict, bool isOpen);
  void countLongerPeriod(const PeriodJudging& judging);

  void sample(const PeriodJudging& judging, PeriodVerdict verdict);
  void report(const PeriodJudging& judging, bool isOpen, PeriodVerdict verdict, std::optional<TaskLogEntryType> fillIn);
  void moveBeyond(const PeriodJudging& judging);
  void capture();
  void fillInFigures();
  void fillInCounts();

  const TaskRules& rules_;
  const HistoryScope& scope_;
  const PeriodVisitor& visit_;
  const std::int32_t created_;
  const std::int32_t today_;
  const std::int32_t fillFrom_;
  std::int32_t captureAfter_;
  /// Day number up to which passCompletedDays() may pass days; none where periods are visited or longer than a day.
  std::optional<std::int32_t> plainThrough_;
  DayCursor cursor_;
  DueRule due_;
  PausedDays pauses_;
  MadeProgress progress_;
  const LoggedEntry* next_;
  const LoggedEntry* const end_;
  const LoggedEntry* periodEntries_;  ///< the first entry of the counting period, where every period is visited
  HistoryCheckpoint state_;
  SuccessSample shortTerm_;
  SuccessSample longTerm_;
  WalkedPeriod current_;
  std::optional<std::int32_t> completedBeforeToday_;  ///< day number
  HistoryResult result_;
};

}  // namespace habitra
