#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Tasks/EntryOrder.h>
#include <HabitraModel/Tasks/FilledInEntries.h>
#include <HabitraModel/Tasks/LogContradictions.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <map>
#include <utility>

namespace habitra {
namespace {

/// Removes contradicted entries from a log, step by step.
class Contradictions {
 public:
  Contradictions(StoreContext& context, const TaskEntity& survivor, std::size_t logs, std::vector<UnitedEntry> entries)
      : context_(context), filledIn_(context, survivor), logs_(logs), entries_(std::move(entries)) {
    std::ranges::sort(entries_, {}, [](const UnitedEntry& united) { return creation(united.entry); });
    const std::optional<TaskRules> rules = rulesOf(survivor);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      places_.emplace(entries_[i].entry.objectID, i);
      if (const auto counted = countedPeriod(entries_[i].entry, rules))
        periods_[{counted->period.startDate, counted->period.finishDate}].push_back(i);
    }
  }

  /// What a person recorded later takes the place of what was there.
  void removeSuperseded() {
    for (const auto& [bounds, places] : periods_)
      for (auto later = places.begin(); later != places.end(); ++later)
        for (auto earlier = places.begin(); earlier != later; ++earlier)
          if (supersedesByHand(*later, *earlier)) remove(*earlier);
  }

  /// What was filled in where something else was known than there is now; `tasks` are then those that knew it.
  void removeRefuted() {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (isPresent(i) && !isNews(i)) continue;
      for (const TaskLogEntryEntity& row : filledIn_.refutedBy(entries_[i].entry)) {
        const std::size_t refuted = places_.at(row.objectID);
        std::set<ObjectID>& tasks = entries_[refuted].tasks;
        std::erase_if(tasks, [&](ObjectID task) { return entries_[i].tasks.contains(task) != isPresent(i); });
        if (tasks.empty()) remove(refuted);
      }
    }
  }

  /// A pass fills in no period that was filled in before.
  void removeFilledInTwice() {
    for (const auto& [bounds, places] : periods_) {
      for (auto later = places.begin(); later != places.end(); ++later) {
        if (!isFilledIn(entries_[*later].entry)) continue;
        if (std::any_of(places.begin(), later, [&](std::size_t earlier) {
              return isPresent(earlier) && isFilledIn(entries_[earlier].entry) && areStrangers(earlier, *later);
            }))
          remove(*later);
      }
    }
  }

  /// Periods of which no log had all entries are read in order of creation, not in that in which rows came.
  void putInOrder() {
    for (const auto& [bounds, places] : periods_) {
      std::vector<TaskLogEntryEntity> entries;
      std::set<ObjectID> common;  // that had all of them
      for (const std::size_t i : places) {
        if (!isPresent(i)) continue;
        if (entries.empty()) common = entries_[i].tasks;
        std::erase_if(common, [&](ObjectID task) { return !entries_[i].tasks.contains(task); });
        entries.push_back(entries_[i].entry);
      }
      if (common.empty()) putRowsInOrder(context_, entries);
    }
  }

  [[nodiscard]] std::optional<std::int32_t> earliestChangedDay() {
    for (std::size_t i = 0; i < entries_.size(); ++i)
      if (isNews(i)) changed(entries_[i].firstDay);
    return earliestChangedDay_;
  }

 private:
  [[nodiscard]] bool isPresent(std::size_t i) const { return !gone_.contains(i); }
  /// Whether some log learns of it now.
  [[nodiscard]] bool isNews(std::size_t i) const {
    return isPresent(i) && entries_[i].tasks.size() < logs_ && !isFilledIn(entries_[i].entry);
  }
  [[nodiscard]] bool areStrangers(std::size_t a, std::size_t b) const {
    return std::ranges::none_of(entries_[a].tasks, [&](ObjectID task) { return entries_[b].tasks.contains(task); });
  }
  [[nodiscard]] bool supersedesByHand(std::size_t later, std::size_t earlier) const {
    const auto type = fromRawValue<TaskLogEntryType>(entries_[later].entry.entryType);
    const auto existing = fromRawValue<TaskLogEntryType>(entries_[earlier].entry.entryType);
    return type && existing && !isAutomatic(*type) && !isFilledIn(entries_[earlier].entry) &&
           supersedes(*type, *existing) && areStrangers(later, earlier);
  }

  void changed(std::int32_t day) { earliestChangedDay_ = std::min(earliestChangedDay_.value_or(day), day); }
  void remove(std::size_t i) {
    if (!gone_.insert(i).second) return;
    context_.removeLogEntry(entries_[i].entry.key());
    changed(entries_[i].firstDay);
  }

  StoreContext& context_;
  const FilledInEntries filledIn_;
  const std::size_t logs_;
  std::vector<UnitedEntry> entries_;  // in order of creation
  std::map<ObjectID, std::size_t> places_;
  std::map<std::pair<qz::YYYYMMDD, qz::YYYYMMDD>, std::vector<std::size_t>> periods_;
  std::set<std::size_t> gone_;
  std::optional<std::int32_t> earliestChangedDay_;
};

}  // namespace

std::optional<std::int32_t> removeContradictions(StoreContext& context, const TaskEntity& survivor, std::size_t logs,
                                                 std::vector<UnitedEntry> entries) {
  Contradictions contradictions(context, survivor, logs, std::move(entries));
  contradictions.removeSuperseded();
  contradictions.removeRefuted();
  contradictions.removeFilledInTwice();
  contradictions.putInOrder();
  return contradictions.earliestChangedDay();
}

}  // namespace habitra
