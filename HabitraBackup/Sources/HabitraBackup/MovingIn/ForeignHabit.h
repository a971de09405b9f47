#pragma once

#include <HabitraBackup/MovingIn/ForeignHistory.h>
#include <HabitraCore/Notifications/TaskReminder.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// An amount that a habit wants, of another tracker.
struct ForeignTarget {
  double amount = 0.0;
  std::string unit;       ///< as it was written, perhaps empty
  bool isLimit = false;   ///< at most the amount, not at least
  std::int64_t days = 1;  ///< for how many days it is wanted
};

/// A habit of another tracker while it is put together.
///
/// *With a target*: nothing here counts amounts by hand, so each day that says one becomes an entry that keeps its
/// amount. To reach: the day that reaches the target is completed, a day below it has one part with its share, a day of
/// 0 is missed; the habit has at least two parts, so that one of them never completes it: as many as the target where
/// that is whole and at most `mostParts`. A target for a week, fortnight, month or year is judged for that whole
/// period: the day with which the sum reaches it completes it, the others have a part; a day of 0 says nothing there.
/// *A limit* makes a habit to avoid: a day above it is missed, any other completed.
class ForeignHabit {
 public:
  static constexpr std::int64_t mostParts = 100;
  /// So many are a whole: amounts are counted in thousandths, as sums of decimals have to be exact.
  static constexpr double thousandthsInOne = 1000.0;

  explicit ForeignHabit(std::string title) : title_(std::move(title)) {}

  [[nodiscard]] const std::string& title() const { return title_; }

  void setIdentifier(const std::optional<qz::UniqueID>& uniqueId) { uniqueId_ = uniqueId; }
  void setArchived() { isArchived_ = true; }
  /// On so many days in so many; adds the remark of what became of it. REQUIRES: both >= 1.
  void setTimesInDays(std::int64_t times, std::int64_t days);
  void setFrequency(const TaskFrequency& frequency) { frequency_ = frequency; }
  /// Instead of a frequency. REQUIRES: days >= 1, the amount is finite.
  void setTarget(const ForeignTarget& target) { target_ = target; }
  void addReminder(const TaskReminder& reminder) { reminders_.push_back(reminder); }
  /// Once, however often it is said.
  void addCategory(const qz::UniqueID& category);

  void add(TaskLogEntryType type, const qz::YYYYMMDD& day, const std::optional<double>& amount = std::nullopt,
           const std::optional<qz::Moment>& made = std::nullopt);
  /// An amount of a habit with a target, in thousandths. REQUIRES: not negative.
  void addAmount(const qz::YYYYMMDD& day, std::int64_t thousandths) { measured_.push_back({day, thousandths}); }
  /// An empty one is none.
  void addNote(const qz::YYYYMMDD& day, std::string_view text);

  void remark(std::string text) { remarks_.push_back(std::move(text)); }
  /// `the question "Did you read?" has no place here`; nothing for an empty text.
  void remarkNoPlace(std::string_view what, std::string_view text);
  /// The file says these days more than once and not alike; `counting` record of each is the one that was taken.
  void remarkContradictions(const std::set<qz::YYYYMMDD>& days, std::string_view counting);

  /// Puts the habit at the end of the history: its task into the document, its report beside it.
  void moveInto(ForeignHistory& history, const ForeignHistorySettings& settings) &&;

 private:
  struct Measured {
    qz::YYYYMMDD day;
    std::int64_t thousandths;
  };

  void judgeAmounts(qz::DayOfWeek firstDayOfWeek);
  void judgeLimit();
  void judgeDays();
  void judgePeriods(TaskFrequencyPeriodType type, qz::DayOfWeek firstDayOfWeek);
  void addPart(const Measured& measured);
  [[nodiscard]] std::string targetText() const;
  [[nodiscard]] HabitraJSONBackupTaskRecord record(qz::DayOfWeek firstDayOfWeek) const;
  [[nodiscard]] ForeignHabitReport report() const;

  std::string title_;
  std::optional<qz::UniqueID> uniqueId_;
  bool isArchived_ = false;
  bool isAvoided_ = false;
  TaskFrequency frequency_ = TaskFrequency::everyDay();
  std::optional<ForeignTarget> target_;
  std::vector<TaskReminder> reminders_;
  std::vector<qz::UniqueID> categories_;
  std::vector<HabitraJSONBackupTaskEntry> entries_;
  std::vector<Measured> measured_;
  std::vector<HabitraJSONBackupTaskNote> notes_;
  std::vector<std::string> remarks_;
};

/// Puts a category into the document unless it is there, and says its identifier, which follows from `key`: what tells
/// it from others where it came from.
[[nodiscard]] qz::UniqueID categoryOf(HabitraJSONBackup& document, const std::string& title, std::string_view key);

}  // namespace habitra
