#pragma once

#include <HabitraCore/DayCursor.h>
#include <HabitraCore/HistoryCheckpoint.h>
#include <HabitraCore/TaskRules.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

/// For sources of this module.
namespace habitra {

/// Which days a task asks for, and which failures it allows, on one pass forward through the calendar. A paused day is
/// never due; that is for the walk to know. Days are day numbers (days since 1970-01-01).
///
/// To do, a day D is due:
/// - specific days of the week or month: when the calendar says so;
/// - every N days: when a positive multiple of N days has passed since the last completed day; with no completed day
///   yet, on the anchor (the reference date, else the first day of the history) and every N days after it;
/// - so many days of a counting period P (week, fortnight, month, year): when, without it, the completed days of P
///   before D and the days of P after D are fewer than P requires. P requires what is wanted, but no more days than
///   there were to be used. *Wanted* is the task's number; in the P in which the history begins its share for the days
///   that were left, rounded down. *Available* are the days of P from the beginning of the history on, without those up
///   to D that were skipped by hand or paused. So a later skip never changes how an earlier day is judged.
///
/// To avoid, every day is due; with specific days the calendar says it. A failed day is allowed while there is room:
/// - specific days: when the day is not due;
/// - every N days: when N days have passed since the failed day before;
/// - counted days: while the failed days of P are fewer than its nominal length less the clean days wanted.
///
/// Tasks that sum over a longer period have no days of their own: no day is due and no failure allowed.
class DueRule {
 public:
  DueRule(const TaskRules& rules, const qz::YYYYMMDD& created);

  /// Takes up the counts of the days up to `closedThrough`.
  void goOnFrom(const DueCounts& counts, const qz::YYYYMMDD& closedThrough);
  /// What has been counted of the days before.
  [[nodiscard]] DueCounts counts() const;

  /// Moves on to a day. REQUIRES: never backwards.
  void enter(const DayCursor& cursor) {
    if (cursor.number() > periodEnd_) [[unlikely]]
      beginPeriod(cursor.date());
  }

  /// Whether the entered day is due. `isUnavailable`: it was itself skipped by hand or paused.
  template <bool isNegative>
  [[nodiscard]] bool isDue(const DayCursor& cursor, bool isUnavailable) const {
    switch (kind_) {
      case Kind::daysOfWeek: return days_.contains(cursor.dayOfWeek());
      case Kind::daysOfMonth: return daysOfMonth_.isDue(cursor.d(), cursor.numberOfDaysOfMonth());
      case Kind::interval: return isNegative || isIntervalDue(cursor.number());
      case Kind::countedDays:
        return isNegative || completedDays_ + stillPossible(cursor.number()) < required(isUnavailable);
      case Kind::longerPeriods: break;
    }
    return false;
  }

  /// To avoid: whether a failure of the entered day is allowed, given whether the day is due.
  [[nodiscard]] bool hasRoom(std::int32_t number, bool isDue) const {
    switch (kind_) {
      case Kind::daysOfWeek:
      case Kind::daysOfMonth: return !isDue;
      case Kind::interval: return lastFailed_ == noDay || number - lastFailed_ >= interval_;
      case Kind::countedDays: return failedDays_ < allowance_;
      case Kind::longerPeriods: break;
    }
    return false;
  }

  /// Whether the answers depend on the log, and not on the calendar alone.
  [[nodiscard]] bool dependsOnLog() const { return kind_ == Kind::interval || kind_ == Kind::countedDays; }
  [[nodiscard]] bool countsDays() const { return kind_ == Kind::countedDays; }
  [[nodiscard]] bool measuresDays() const { return kind_ != Kind::longerPeriods; }

  // What came of the entered day, or of days since the last one entered. Days before the counting period of the entered
  // day do not count for it.

  void countCompleted(std::int32_t number) { countCompleted(number, 1); }
  /// So many days in a row, of which `last` is the last.
  void countCompleted(std::int32_t last, std::int32_t numDays) {
    lastCompleted_ = last;
    if (last >= periodStart_) completedDays_ += numDays;
  }
  void countFailed(std::int32_t number) {
    lastFailed_ = number;
    if (number >= periodStart_) ++failedDays_;
  }
  void countUnavailable(std::int32_t numDays) { unavailableDays_ += numDays; }

  /// Bounds of the counting period of the entered day. Of modes that count no days that is all time.
  [[nodiscard]] std::int32_t periodStart() const { return periodStart_; }
  [[nodiscard]] std::int32_t periodEnd() const { return periodEnd_; }

  // The numbers behind the answers, for the entered day `number`; see above for what they mean.

  [[nodiscard]] std::int64_t completedDays() const { return completedDays_; }
  [[nodiscard]] std::int64_t failedDays() const { return failedDays_; }
  [[nodiscard]] std::int64_t wanted() const { return wanted_; }
  [[nodiscard]] std::int64_t available(bool isUnavailable) const {
    return usableDays_ - unavailableDays_ - (isUnavailable ? 1 : 0);
  }
  [[nodiscard]] std::int64_t required(bool isUnavailable) const { return std::min(wanted_, available(isUnavailable)); }
  [[nodiscard]] std::int64_t stillPossible(std::int32_t number) const { return periodEnd_ - number; }
  [[nodiscard]] std::int64_t allowance() const { return allowance_; }
  [[nodiscard]] std::optional<std::int32_t> lastCompleted() const { return someDay(lastCompleted_); }
  [[nodiscard]] std::optional<std::int32_t> lastFailed() const { return someDay(lastFailed_); }
  [[nodiscard]] std::int32_t anchor() const { return anchor_; }

 private:
  enum class Kind : std::uint8_t { daysOfWeek, daysOfMonth, interval, countedDays, longerPeriods };
  static constexpr std::int32_t noDay = std::numeric_limits<std::int32_t>::min();

  [[nodiscard]] static Kind kindOf(const TaskFrequency& frequency);
  [[nodiscard]] bool isIntervalDue(std::int32_t number) const {
    if (lastCompleted_ == noDay) return number >= anchor_ && (number - anchor_) % interval_ == 0;
    return number > lastCompleted_ && (number - lastCompleted_) % interval_ == 0;
  }
  void beginPeriod(const qz::YYYYMMDD& date);
  [[nodiscard]] static std::optional<std::int32_t> someDay(std::int32_t number) {
    return number == noDay ? std::nullopt : std::optional(number);
  }

  const TaskRules& rules_;
  const Kind kind_;
  const qz::DaysOfWeek days_;
  const DaysOfMonth daysOfMonth_;
  const std::int32_t interval_;
  const std::int32_t created_;
  const std::int32_t anchor_;
  const std::int64_t allowance_;

  // The counting period of the entered day.
  std::int32_t periodStart_;
  std::int32_t periodEnd_;
  std::int64_t wanted_ = 0;
  std::int64_t usableDays_ = 0;  ///< days of it from the beginning of the history on
  std::int64_t completedDays_ = 0;
  std::int64_t unavailableDays_ = 0;
  std::int64_t failedDays_ = 0;
  // Of the whole history.
  std::int32_t lastCompleted_ = noDay;
  std::int32_t lastFailed_ = noDay;
};

}  // namespace habitra
