#include <HabitraBackup/DerivedIdentifier.h>
#include <HabitraBackup/MovingIn/ForeignFrequency.h>
#include <HabitraBackup/MovingIn/ForeignHabit.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/ReminderMapping.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZKit/Checked.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace habitra {

namespace {

constexpr std::size_t mostDaysNamed = 10;       // by one remark
constexpr std::size_t longestQuotedText = 500;  // a remark shows what is not taken over whole, within reason

/// Of whole thousandths this is the very number that their decimals read as, so comparing it with another is exact.
double amountOf(std::int64_t thousandths) { return static_cast<double>(thousandths) / ForeignHabit::thousandthsInOne; }

bool isForDay(const ForeignTarget& target) { return target.days == 1; }

/// The kind of period for which a target of so many days is wanted; none for other numbers of days.
std::optional<TaskFrequencyPeriodType> periodOf(std::int64_t days) {
  switch (days) {
    case 7: return TaskFrequencyPeriodType::week;
    case 14: return TaskFrequencyPeriodType::fortnight;
    case 30:
    case 31: return TaskFrequencyPeriodType::month;
    case 365:
    case 366: return TaskFrequencyPeriodType::year;
    default: return std::nullopt;
  }
}

TaskFrequency::DayMode aggregateOver(TaskFrequencyPeriodType type) {
  switch (type) {
    case TaskFrequencyPeriodType::fortnight: return TaskFrequency::DayMode::aggregateOverFortnight;
    case TaskFrequencyPeriodType::month: return TaskFrequency::DayMode::aggregateOverMonth;
    case TaskFrequencyPeriodType::year: return TaskFrequency::DayMode::aggregateOverYear;
    case TaskFrequencyPeriodType::day:
    case TaskFrequencyPeriodType::week: break;
  }
  return TaskFrequency::DayMode::aggregateOverWeek;
}

/// In how many parts a target is made.
std::int64_t partsOf(double amount) {
  const bool isCount =
      amount >= 2 && amount <= static_cast<double>(ForeignHabit::mostParts) && std::trunc(amount) == amount;
  return isCount ? qz::checkedCount(amount) : 2;
}

}  // namespace

void ForeignHabit::setTimesInDays(std::int64_t times, std::int64_t days) {
  ForeignFrequency nearest = frequencyOfTimesInDays(times, days);
  frequency_ = nearest.frequency;
  if (!nearest.remark.empty()) remark(std::move(nearest.remark));
}

void ForeignHabit::addCategory(const qz::UniqueID& category) {
  if (std::find(categories_.begin(), categories_.end(), category) == categories_.end()) categories_.push_back(category);
}

void ForeignHabit::add(TaskLogEntryType type, const qz::YYYYMMDD& day, const std::optional<double>& amount,
                       const std::optional<qz::Moment>& made) {
  HabitraJSONBackupTaskEntry entry;
  entry.entryType = type;
  entry.entryDate = day;
  if (isCompletedFull(type)) entry.progress = 1.0;
  entry.progressTotal = amount;
  entry.createdTimestamp = made;
  entries_.push_back(std::move(entry));
}

void ForeignHabit::addNote(const qz::YYYYMMDD& day, std::string_view text) {
  if (foreign_text::trimmed(text).empty()) return;
  HabitraJSONBackupTaskNote note;
  note.noteDate = qz::checkedNarrow<std::int32_t>(day.intValue());
  note.content = std::string(text);
  notes_.push_back(std::move(note));
}

void ForeignHabit::remarkNoPlace(std::string_view what, std::string_view text) {
  const std::string_view said = foreign_text::trimmed(text);
  if (said.empty()) return;
  remark(fmt::format("the {} {} has no place here", what, qz::utf8::quoted(said, longestQuotedText)));
}

void ForeignHabit::remarkContradictions(const std::set<qz::YYYYMMDD>& days, std::string_view counting) {
  if (days.empty()) return;
  std::string named;
  std::size_t numNamed = 0;
  for (const qz::YYYYMMDD& day : days) {
    if (++numNamed > mostDaysNamed) {
      named += fmt::format(" and {}", foreign_text::counted(days.size() - mostDaysNamed, "other", "others"));
      break;
    }
    named += (named.empty() ? "" : ", ") + day.debugDescription();
  }
  remark(fmt::format("recorded more than once and not alike, the {} record counts: {}", counting, named));
}

void ForeignHabit::judgeAmounts(qz::DayOfWeek firstDayOfWeek) {
  std::stable_sort(measured_.begin(), measured_.end(),
                   [](const Measured& a, const Measured& b) { return a.day < b.day; });
  if (target_->isLimit) return judgeLimit();
  const auto period = periodOf(target_->days);
  if (period) return judgePeriods(*period, firstDayOfWeek);
  if (!isForDay(*target_)) remark(targetText() + " became one for each day");
  judgeDays();
}

void ForeignHabit::judgeLimit() {
  isAvoided_ = true;
  remark(targetText() + " became a habit to avoid" +
         (isForDay(*target_) ? std::string() : std::string(", and each day is judged by the limit alone")));
  for (const Measured& measured : measured_) {
    const double amount = amountOf(measured.thousandths);
    const bool isAbove = amount > target_->amount;
    add(isAbove ? TaskLogEntryType::missedManuallyFull : TaskLogEntryType::completedManuallyFull, measured.day, amount);
  }
}

void ForeignHabit::judgeDays() {
  frequency_ = TaskFrequency::everyDay();
  frequency_.numPartialCompletions = partsOf(target_->amount);
  remark(fmt::format("{} became {} parts a day, done by hand; the amounts stay with their entries", targetText(),
                     frequency_.numPartialCompletions));
  for (const Measured& measured : measured_) {
    const double amount = amountOf(measured.thousandths);
    if (amount >= target_->amount) {
      add(TaskLogEntryType::completedManuallyFull, measured.day, amount);
    } else if (amount > 0) {
      addPart(measured);
    } else {
      add(TaskLogEntryType::missedManuallyFull, measured.day, amount);
    }
  }
}

void ForeignHabit::judgePeriods(TaskFrequencyPeriodType type, qz::DayOfWeek firstDayOfWeek) {
  frequency_ = TaskFrequency();
  frequency_.dayMode = aggregateOver(type);
  // One part for each day of the period never completes it; only what reaches the target does.
  frequency_.numPartialCompletions = std::max(partsOf(target_->amount), nominalLength(type) + 1);
  remark(fmt::format("{} became {} parts a {}, done by hand; the amounts stay with their entries", targetText(),
                     frequency_.numPartialCompletions, qz::caseName(type)));
  qz::YYYYMMDD begin;
  std::int64_t sum = 0;
  std::size_t numEmpty = 0;
  for (const Measured& measured : measured_) {
    const qz::YYYYMMDD itsBegin = firstDate(type, measured.day, firstDayOfWeek);
    if (std::exchange(begin, itsBegin) != itsBegin) sum = 0;
    const bool wasReached = amountOf(sum) >= target_->amount;
    sum += std::min(measured.thousandths, std::numeric_limits<std::int64_t>::max() - sum);
    if (!wasReached && amountOf(sum) >= target_->amount) {
      add(TaskLogEntryType::completedManuallyFull, measured.day, amountOf(measured.thousandths));
    } else if (measured.thousandths > 0) {
      addPart(measured);
    } else {
      ++numEmpty;
    }
  }
  if (numEmpty == 0) return;
  remark(foreign_text::counted(numEmpty, "day with the amount 0 has", "days with the amount 0 have") +
         " no place in a longer period");
}

void ForeignHabit::addPart(const Measured& measured) {
  const double amount = amountOf(measured.thousandths);
  add(TaskLogEntryType::completedManuallyPartial, measured.day, amount);
  if (target_->amount > 0) entries_.back().progress = amount / target_->amount;
}

std::string ForeignHabit::targetText() const {
  std::string text = fmt::format("the target of {} {}", target_->isLimit ? "at most" : "at least",
                                 foreign_text::amount(target_->amount));
  const std::string_view unit = foreign_text::trimmed(target_->unit);
  if (!unit.empty()) text += " " + qz::utf8::printable(unit);
  return text + (isForDay(*target_) ? std::string(" a day") : fmt::format(" in {} days", target_->days));
}

HabitraJSONBackupTaskRecord ForeignHabit::record(qz::DayOfWeek firstDayOfWeek) const {
  HabitraJSONBackupTaskRecord record;
  record.isWhole = false;
  record.task.status = isArchived_ ? task_status::archived : task_status::active;
  record.task.firstDayOfWeekValue = qz::checkedNarrow<std::int16_t>(firstDayOfWeek.rawValue());
  record.task.isNegative = isAvoided_;
  habitra::setFrequency(record.task, frequency_);
  for (const TaskReminder& reminder : reminders_) setReminder(record.reminders.emplace_back(), reminder);
  record.categories = categories_;
  return record;
}

ForeignHabitReport ForeignHabit::report() const {
  const auto count = [this](auto&& holds) {
    return static_cast<std::size_t>(std::count_if(entries_.begin(), entries_.end(), holds));
  };
  ForeignHabitReport report;
  report.title = title_;
  report.entries = entries_.size();
  report.skips = count([](const HabitraJSONBackupTaskEntry& entry) { return isSkipped(entry.entryType); });
  report.misses = count([](const HabitraJSONBackupTaskEntry& entry) { return isMissedFullOrPartial(entry.entryType); });
  report.amounts = count([](const HabitraJSONBackupTaskEntry& entry) { return entry.progressTotal.has_value(); });
  report.notes = notes_.size();
  report.isArchived = isArchived_;
  report.remarks = remarks_;
  return report;
}

void ForeignHabit::moveInto(ForeignHistory& history, const ForeignHistorySettings& settings) && {
  if (target_) judgeAmounts(settings.firstDayOfWeek);
  std::stable_sort(entries_.begin(), entries_.end(),
                   [](const auto& a, const auto& b) { return a.entryDate < b.entryDate; });
  std::stable_sort(notes_.begin(), notes_.end(), [](const auto& a, const auto& b) { return a.noteDate < b.noteDate; });
  history.habits.push_back(report());
  HabitraJSONBackupTask task;
  task.uniqueId = uniqueId_;
  task.record = record(settings.firstDayOfWeek);
  task.title = std::move(title_);
  task.log = std::move(entries_);
  if (!notes_.empty()) task.notes = std::move(notes_);
  history.document.tasks.push_back(std::move(task));
}

qz::UniqueID categoryOf(HabitraJSONBackup& document, const std::string& title, std::string_view key) {
  const qz::UniqueID uniqueId = identifierOfText("category\n" + std::string(key));
  if (!document.categories) document.categories.emplace();
  const std::string text = uniqueId.text();
  const auto isIt = [&text](const TaskCategoryEntity& category) { return category.uniqueId == text; };
  if (std::none_of(document.categories->begin(), document.categories->end(), isIt)) {
    TaskCategoryEntity& category = document.categories->emplace_back();
    category.title = title;
    category.uniqueId = text;
  }
  return uniqueId;
}

}  // namespace habitra
