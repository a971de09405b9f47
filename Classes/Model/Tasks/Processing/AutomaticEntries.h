#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/HealthMeasuring.h>
#include <HabitraModel/Tasks/Processing/HealthNews.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <set>
#include <vector>

namespace habitra {

/// What health data make of the log of a task: entries to record, after some that are there are deleted.
struct AutomaticPlan {
  LogRevision revision;
  std::vector<TaskLogRecorder::LogEntryData> entries;
  std::set<qz::YYYYMMDD> failures;  ///< to avoid: the days of failures that come or go
  bool decidesPeriod = false;
};

/// Plans, period by period, the entries that health data ask for.
///
/// - To do: a period that is reached gets a full completion; one that is not, but was begun, one partial entry that
///   carries the amount, brought up to date in place. To avoid: what is reached is a miss, within the allowance an
///   allowed one, and what is not a partial miss. A full entry's progress is 1, and its amount what was measured.
/// - What people say beside the data counts along. An amount that they report is what the period had reached with it,
///   the data of that time included: the period comes to the greater of that and what is measured. Parts without an
///   amount, and runs of timers, are on top of what is measured, unless the health store has them as samples already.
///   So an entry that carries an amount is the last of its period.
/// - What only counts how often something happened, towards several completions, has one partial entry for each time,
///   as a person would have made it.
/// - A period that a person decided is left alone, and so is a completion that sealed a past (it has no progress). An
///   undo decides nothing: data say it again.
/// - An amount that falls again (a balance of energies) decides a period only when it is over.
/// - What data no longer say is deleted, since it was derived from them: where samples came or went, or where there are
///   samples that say less. Where there are none, and never were as far as is known here, a log that was brought along
///   from elsewhere stands. A judged period of the past is looked at again only when its amount is another one, and
///   what was reached stays where it is more, so that a new target leaves it as it was. It stays as well where the
///   period was over before the task was measured as it is: amounts of another unit say nothing against it.
/// - A period that is over, has no full entry and has data or has changed is judged again by what is in it: a skip or
///   miss that it lacks is filled in.
///
/// Reads the store and the health store, and writes nothing. Belongs to the queue of its context.
class AutomaticEntries {
 public:
  /// All must live longer. REQUIRES: the assessment has rules.
  AutomaticEntries(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment,
                   const AutomaticTaskType& type, const HealthMeasuring& measuring, qz::Moment now);

  /// Plans a period.
  void add(const PeriodOfLog& period, const PeriodNews& news);

  /// Lets go what followed from the days that are decided anew, lets each failure say whether it lies within the
  /// allowance, and gives the plan.
  [[nodiscard]] AutomaticPlan finish();

 private:
  struct Standing;
  struct Said;
  struct Finding;

  /// Whether data said that the period is done, or failed.
  [[nodiscard]] bool isOwnFull(const LoggedEntry& entry) const;
  /// Whether a person decided the period, or a past that was judged was sealed with it.
  [[nodiscard]] bool isDecidedOtherwise(const LoggedEntry& entry) const;
  [[nodiscard]] Standing standing(const PeriodOfLog& period) const;
  [[nodiscard]] Finding find(const PeriodOfLog& period) const;
  [[nodiscard]] Said saidByHand(const PeriodOfLog& period, double needed) const;
  [[nodiscard]] bool isInHealthStore(const LoggedEntry& entry) const;
  void allowFailures();
  void decide(const PeriodOfLog& period, const Standing& standing, const Finding& finding);
  void carry(const PeriodOfLog& period, const Standing& standing, const Finding& finding);
  [[nodiscard]] bool countsTimes(const PeriodOfLog& period) const;
  void carryTimes(const PeriodOfLog& period, const Standing& standing, const Finding& finding);
  void record(const PeriodOfLog& period, TaskLogEntryType type, const Finding& finding, const LoggedEntry* inPlace,
              std::optional<qz::UniqueID> uniqueId);
  void takeBack(const PeriodOfLog& period, const LoggedEntry& entry);
  /// What passes filled in for the period goes where data make an entry or take one back, and what follows from the day
  /// is looked at in the end.
  void refute(const PeriodOfLog& period, qz::YYYYMMDD day);
  void remove(const LoggedEntry& entry);
  void touch(qz::YYYYMMDD day);

  StoreContext& context_;
  const TaskEntity& task_;
  const TaskAssessment& assessment_;
  const AutomaticTaskType& type_;
  const HealthMeasuring& measuring_;
  const qz::Moment now_;
  const FilledInEntries filledIn_;
  AutomaticPlan plan_;
  std::set<qz::YYYYMMDD> decided_;  ///< days from which others follow
};

}  // namespace habitra
