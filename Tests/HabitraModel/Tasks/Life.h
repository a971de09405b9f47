#pragma once

#include <HabitraCore/HistoryWalk.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "TaskWorld.h"

namespace habitra {

/// The life of one habit, in a store and without one, for tests that compare the two.

/// What somebody records: an entry, for the day and the period that stand in it. Its `order` does not count.
using Act = LoggedEntry;

/// As a person makes it: of the period of `rules` that holds the day.
[[nodiscard]] Act actOn(const TaskRules& rules, const qz::YYYYMMDD& day, TaskLogEntryType type);

/// What was recorded, by the rules of recording alone: a new entry takes the place of what it supersedes, the last part
/// of a failure is the failure, and failures say whether they lie within the allowance. Nothing is filled in; that is
/// left to the walk over it.
class RecordedLog {
 public:
  RecordedLog(TaskRules rules, const qz::YYYYMMDD& creationDay) : rules_(std::move(rules)), created_(creationDay) {}

  void record(Act act);
  [[nodiscard]] const std::vector<LoggedEntry>& entries() const { return entries_; }
  /// How the history is walked that was filled in from its creation day on, or else from its first entry on.
  [[nodiscard]] HistoryScope scope(const qz::YYYYMMDD& today, bool isFilledFromCreation) const;
  [[nodiscard]] HistoryWalk walk(const qz::YYYYMMDD& today, bool isFilledFromCreation) const {
    return {rules_, scope(today, isFilledFromCreation)};
  }

 private:
  [[nodiscard]] bool isLastPartOfFailure(const Act& act) const;

  TaskRules rules_;
  qz::YYYYMMDD created_;
  std::vector<LoggedEntry> entries_;  ///< by day, then in order of creation
};

/// One line per period: its days, its status, and the streak after it.
[[nodiscard]] std::vector<std::string> statusLines(const HistoryWalk& walk, std::span<const LoggedEntry> entries);
/// What a store keeps of such figures.
[[nodiscard]] std::string figuresLine(const TaskFigures& figures);

/// A store in which the habit is recorded and processed, with a clock that shows noon of its days.
class Life : public TaskWorld {
 public:
  Life(const TaskRules& rules, const qz::YYYYMMDD& creationDay);

  void goTo(const qz::YYYYMMDD& day);
  void record(const Act& act);
  void pass();

  /// The rules as they came back from the store.
  [[nodiscard]] TaskRules rules() { return rulesOf(*context_, *task_).value(); }
  [[nodiscard]] std::vector<LoggedEntry> entries();
  /// One line per entry: day, type, period, share and amount; within a period in order of creation.
  [[nodiscard]] std::vector<std::string> entryLines();
  /// The stored figures; the progress only where one is kept by passes.
  [[nodiscard]] std::string figuresLine(bool isProgressTracked);

 private:
  void TestBody() override {}

  TaskEntity* task_;
};

}  // namespace habitra
