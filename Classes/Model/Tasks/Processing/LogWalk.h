#pragma once

#include <HabitraCore/HistoryCheckpoint.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/LogRevision.h>
#include <HabitraModel/Tasks/TaskCalendar.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace habitra {

/// Walks the log of a task as it lies in the store, a few years at a time, so that what is held does not grow with the
/// length of the history. What comes out is what one walk over all of it would give.
///
/// Belongs to the queue of its context; all that is handed in must live longer.
class LogWalk {
 public:
  /// The days of a part, two years: more than the longest span of success, within which none can end.
  static constexpr std::int64_t usualPart = 731;

  /// Entries of days after `lastDay`, as it is stored, count for nothing, but for those of `ahead`.
  /// The log is walked as `revision` leaves it. REQUIRES: HistoryWalk::supports() the frequency.
  LogWalk(StoreContext& context, ObjectID task, const TaskRules& rules, const TaskCalendar& calendar,
          std::int32_t lastDay, std::vector<LoggedEntry> ahead = {}, std::int64_t daysOfPart = usualPart,
          LogRevision revision = {});

  /// The history of these days, gone on with from `begin` where there is one. REQUIRES: such a checkpoint can be
  /// resumed from.
  [[nodiscard]] HistoryResult run(const HistoryScope& scope, const std::optional<HistoryCheckpoint>& begin);

  /// Visits the periods of these days in order, each as that history judges it; those that `begin` holds may be left
  /// out. A period is valid during its visit. REQUIRES: as for run().
  void visit(const HistoryScope& scope, const std::optional<HistoryCheckpoint>& begin, const PeriodVisitor& visit);

 private:
  /// Walks from `begin` on until the rest fits into one walk, and gives the entries of that. None where only a walk
  /// over the whole judges it right: where the log has a period that lies across the end of a part.
  [[nodiscard]] std::optional<std::vector<LoggedEntry>> walkToRest(const HistoryScope& scope,
                                                                   const std::optional<HistoryCheckpoint>& begin,
                                                                   const PeriodVisitor& visit = {});
  [[nodiscard]] std::vector<LoggedEntry> wholeLog(const HistoryScope& scope);
  [[nodiscard]] bool walkParts(const HistoryScope& scope, const PeriodVisitor& visit);
  /// Walks the days up to `last` that were not walked yet, and takes over what they came to.
  [[nodiscard]] bool walkPart(const HistoryScope& scope, qz::YYYYMMDD last, const PeriodVisitor& visit);
  /// The walk over what is left; a day that the zone left out is a skip.
  [[nodiscard]] HistoryResult walkRest(const HistoryScope& scope, std::vector<LoggedEntry> entries,
                                       const PeriodVisitor& visit = {}) const;
  /// The last one, with what was recorded in time for later days.
  [[nodiscard]] HistoryResult walkLast(const HistoryScope& scope, std::vector<LoggedEntry> entries,
                                       const PeriodVisitor& visit = {}) const;
  [[nodiscard]] HistoryScope rest(HistoryScope scope) const;
  [[nodiscard]] std::vector<LoggedEntry> read(std::int32_t to);
  [[nodiscard]] bool reachesBack(const std::vector<LoggedEntry>& entries) const;

  StoreContext& context_;
  const ObjectID task_;
  const TaskRules& rules_;
  const TaskCalendar& calendar_;
  const std::int32_t lastDay_;
  const std::vector<LoggedEntry> ahead_;
  const std::int64_t daysOfPart_;
  const LogRevision revision_;
  std::optional<HistoryCheckpoint> walked_;  ///< up to where
  std::vector<FillIn> fillIns_;              ///< of the days up to there
};

}  // namespace habitra
