#pragma once

#include "NaiveHistoryDue.h"
#include "NaiveHistoryPeriods.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace habitra {

/// A history judged from its first period to its last, and the lines that it comes to.
class NaiveHistory {
 public:
  NaiveHistory(const TaskRules& rules, const HistoryScope& scope, std::span<const LoggedEntry> log);

  [[nodiscard]] const std::vector<NaivePeriod>& periods() const { return periods_; }
  [[nodiscard]] std::string line(const NaivePeriod& period) const;
  [[nodiscard]] std::string figures() const;

 private:
  void judge(NaivePeriod& period);
  void apply(NaivePeriod& period, const LoggedEntry& entry);
  void applyToDo(NaivePeriod& period, const LoggedEntry& entry);
  void applyToAvoid(NaivePeriod& period, const LoggedEntry& entry);
  void gain(NaivePeriod& period);
  [[nodiscard]] std::optional<TaskLogEntryType> fillIn(const NaivePeriod& period) const;
  [[nodiscard]] bool mayGain(const NaivePeriod& period) const;
  [[nodiscard]] PeriodVerdict verdict(const NaivePeriod& period) const;
  void note(const NaivePeriod& period);
  [[nodiscard]] CompletionStatus::Status status(const NaivePeriod& period) const;
  [[nodiscard]] std::string success(TaskRecentHistory::PreviousSuccessType span) const;

  TaskRules rules_;
  HistoryScope scope_;
  NaiveDue due_;
  std::vector<NaivePeriod> periods_;
  StreakStatus streak_;
  std::optional<qz::YYYYMMDD> lastCompleted_;
  std::optional<qz::YYYYMMDD> lastMissed_;
  std::optional<qz::YYYYMMDD> lastSkipped_;
};

}  // namespace habitra
