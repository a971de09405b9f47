#pragma once

#include "NaiveHistoryPeriods.h"

#include <span>

namespace habitra {

/// When a period is due, and when a failure of it is allowed. `before` are the periods before it, all judged.
class NaiveDue {
 public:
  NaiveDue(const TaskRules& rules, const HistoryScope& scope) : rules_(rules), scope_(scope) {}

  /// Sets isDue, missIsAllowed and the numbers. Whether the period was completed or skipped by hand must be known.
  void judge(NaivePeriod& period, std::span<const NaivePeriod> before) const;

  [[nodiscard]] bool isPaused(const qz::YYYYMMDD& day) const;
  [[nodiscard]] bool isPausedSomeDay(const NaivePeriod& period) const;
  [[nodiscard]] bool isPausedThroughout(const NaivePeriod& period) const;
  /// Whether how a day shows depends on the log: in the counted-days modes and for intervals.
  [[nodiscard]] bool dependsOnLog() const;

 private:
  [[nodiscard]] bool isAggregate() const;
  [[nodiscard]] bool isCounted() const;
  [[nodiscard]] bool isInterval() const;
  [[nodiscard]] bool calendarSaysSo(const qz::YYYYMMDD& day) const;
  [[nodiscard]] bool isDue(const NaivePeriod& period) const;
  [[nodiscard]] bool missIsAllowed(const NaivePeriod& period) const;
  [[nodiscard]] bool isUnavailable(const qz::YYYYMMDD& day, const NaivePeriod& today,
                                   std::span<const NaivePeriod> before) const;
  void countToDo(NaivePeriod& period, std::span<const NaivePeriod> before) const;
  void countToAvoid(NaivePeriod& period, std::span<const NaivePeriod> before) const;
  void measureInterval(NaivePeriod& period, std::span<const NaivePeriod> before) const;

  const TaskRules& rules_;
  const HistoryScope& scope_;
};

}  // namespace habitra
