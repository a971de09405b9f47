#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Tasks/Deduplication/EntryOrder.h>
#include <HabitraModel/Tasks/Deduplication/LogContradictions.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <tuple>
#include <utility>

namespace habitra {
namespace {

struct ByBounds {
  bool operator()(const TaskFrequencyPeriod& a, const TaskFrequencyPeriod& b) const {
    return std::tie(a.startDate, a.finishDate) < std::tie(b.startDate, b.finishDate);
  }
};

/// Removes contradicted entries from a log, step by step.
class Contradictions {
 public:
  Contradictions(StoreContext& context, const TaskEntity& survivor, std::size_t logs, std::vector<UnitedEntry> entries)
      : context_(context),
        rules_(rulesOf(context, survivor)),
        filledIn_(context, survivor, rules_),
        logs_(logs),
        entries_(std::move(entries)) {
    std::ranges::sort(entries_, {}, [](const UnitedEntry& united) { return creation(united.entry); });
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      places_.emplace(entries_[i].entry.objectID, i);
      if (const auto counted = countedPeriod(entries_[i].entry, rules_)) periods_[counted->period].push_back(i);
    }
  }

  /// What a person recorded later, or data decided, takes the place of what was there; the last part of a failure is
  /// the failure.
  void removeSuperseded() {
    for (const auto& [period, places] : periods_) {
      for (auto later = places.begin(); later != places.end(); ++later) {
        const std::span<const std::size_t> before(places.begin(), later);
        if (isLastPartOfFailure(*later, before, period)) becomeFailure(*later);
        for (const std::size_t earlier : before)
          if (takesPlaceOf(*later, earlier)) remove(earlier);
      }
    }
  }

  /// What was filled in where something else was known than there is now; `rows` are then of those that knew it.
  void removeRefuted() {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (isPresent(i) && !isNews(i)) continue;
      for (const LogKey& key : filledIn_.refutedBy(entries_[i].entry)) {
        const std::size_t refuted = places_.at(key.objectID);
        auto& rows = entries_[refuted].rows;
        std::erase_if(rows, [&](const auto& known) { return entries_[i].rows.contains(known.first) != isPresent(i); });
        if (rows.empty()) remove(refuted);
      }
    }
  }

  /// A pass fills in no period that was filled in before.
  void removeFilledInTwice() {
    for (const auto& [period, places] : periods_) {
      for (auto later = places.begin(); later != places.end(); ++later) {
        if (!isFilledIn(entries_[*later].entry)) continue;
        if (std::any_of(places.begin(), later, [&](std::size_t earlier) {
              return isPresent(earlier) && isFilledIn(entries_[earlier].entry) && areStrangers(earlier, *later);
            }))
          remove(*later);
      }
    }
  }

  /// Rows came log by log, but a walk goes by their order within a period.
  void putInOrder() {
    for (const auto& [period, places] : periods_) {
      std::vector<std::size_t> present;
      std::ranges::copy_if(places, std::back_inserter(present), [this](std::size_t i) { return isPresent(i); });
      std::vector<TaskLogEntryEntity> entries;
      for (const std::size_t i : inOrder(std::move(present))) entries.push_back(entries_[i].entry);
      putRowsInOrder(context_, entries);
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
    return isPresent(i) && entries_[i].rows.size() < logs_ && !isFilledIn(entries_[i].entry);
  }
  [[nodiscard]] bool areStrangers(std::size_t a, std::size_t b) const {
    return std::ranges::none_of(entries_[a].rows,
                                [&](const auto& row) { return entries_[b].rows.contains(row.first); });
  }
  /// Entries of one period, given in order of creation, in that of the logs that had all of them.
  [[nodiscard]] std::vector<std::size_t> inOrder(std::vector<std::size_t> places) const {
    if (places.empty()) return places;
    std::optional<std::vector<std::size_t>> ofLogs;
    for (const auto& first : entries_[places.front()].rows) {
      const ObjectID log = first.first;
      if (!std::ranges::all_of(places, [&](std::size_t i) { return entries_[i].rows.contains(log); })) continue;
      std::vector<std::size_t> ofLog = places;
      std::ranges::sort(ofLog, {}, [&](std::size_t i) { return entries_[i].rows.at(log); });
      if (ofLogs && *ofLogs != ofLog) return places;
      ofLogs = std::move(ofLog);
    }
    return ofLogs.value_or(std::move(places));
  }
  [[nodiscard]] bool takesPlaceOf(std::size_t later, std::size_t earlier) const {
    const auto type = fromRawValue<TaskLogEntryType>(entries_[later].entry.entryType);
    const auto existing = fromRawValue<TaskLogEntryType>(entries_[earlier].entry.entryType);
    const bool decides = type && (!isAutomatic(*type) || (isFull(*type) && !isFilledIn(entries_[later].entry)));
    return decides && existing && !isFilledIn(entries_[earlier].entry) && supersedes(*type, *existing) &&
           areStrangers(later, earlier);
  }

  /// Whether the parts that stood in the period when it was recorded fail it together with this one.
  [[nodiscard]] bool isLastPartOfFailure(std::size_t i, std::span<const std::size_t> before,
                                         const TaskFrequencyPeriod& period) const {
    const TaskLogEntryType type = entryTypeFromStored(entries_[i].entry.entryType);
    if (!rules_ || !rules_->isNegative || type != TaskLogEntryType::missedManuallyPartial) return false;
    std::vector<LoggedEntry> entries;
    std::map<ObjectID, ObjectID> logsWithAll = entries_[i].rows;
    const auto add = [&](std::size_t place) {
      entries.push_back(loggedEntry(entries_[place].entry));
      entries.back().order = static_cast<std::int64_t>(place);
      std::erase_if(logsWithAll, [&](const auto& log) { return !entries_[place].rows.contains(log.first); });
    };
    for (const std::size_t earlier : before)
      if (isPresent(earlier) && !supersedes(type, entryTypeFromStored(entries_[earlier].entry.entryType))) add(earlier);
    add(i);
    // A log that had all of them has judged them, by the rules of its time.
    if (!logsWithAll.empty()) return false;
    std::ranges::sort(entries, {}, [](const LoggedEntry& entry) { return std::pair(entry.entryDate, entry.order); });
    return failPeriod(*rules_, period, entries);
  }
  /// No log knew it as that.
  void becomeFailure(std::size_t i) {
    UnitedEntry& failure = entries_[i];
    failure.entry.entryType = rawValue(TaskLogEntryType::missedManuallyFull);
    failure.rows.clear();
    context_.updateLogEntry(failure.entry.key(), failure.entry);
  }

  void changed(std::int32_t day) { earliestChangedDay_ = std::min(earliestChangedDay_.value_or(day), day); }
  void remove(std::size_t i) {
    if (!gone_.insert(i).second) return;
    context_.removeLogEntry(entries_[i].entry.key());
    changed(entries_[i].firstDay);
  }

  StoreContext& context_;
  const std::optional<TaskRules> rules_;
  const FilledInEntries filledIn_;
  const std::size_t logs_;
  std::vector<UnitedEntry> entries_;  // in order of creation
  std::map<ObjectID, std::size_t> places_;
  std::map<TaskFrequencyPeriod, std::vector<std::size_t>, ByBounds> periods_;
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
