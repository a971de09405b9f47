#include <HabitraCore/RawValue.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/HealthNews.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace habitra {
namespace {

using Type = qz::QZHKObjectType;

constexpr std::string_view nothing = "-";

/// Takes what is before the next separator off the text; all of it when there is none.
std::string_view takeWord(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

std::optional<std::int64_t> numberFrom(std::string_view word) {
  std::int64_t number = 0;
  const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (failure != std::errc() || end != word.data() + word.size() || number < 0) return std::nullopt;
  return number;
}

/// How many changes of the kind that changed most often are new.
std::int64_t lookBack(const qz::QZHKChanges& changes, const std::set<Type>& kinds) {
  std::int64_t most = 0;
  for (const Type kind : kinds)
    if (const auto found = changes.numbers.find(kind); found != changes.numbers.end())
      most = std::max(most, found->second);
  return most;
}

}  // namespace

std::string HealthAnchor::text() const {
  std::vector<std::string_view> names;
  names.reserve(kinds.size());
  for (const Type kind : kinds) names.push_back(qz::rawValue(kind));
  return fmt::format("{} {} {} {} {}", store ? store->text() : std::string(nothing), change, fmt::join(names, ","),
                     yardstick, since ? std::to_string(storedDay(since)) : std::string(nothing));
}

std::optional<HealthAnchor> HealthAnchor::fromText(std::string_view text) {
  HealthAnchor anchor;
  const std::string_view store = takeWord(text, ' ');
  if (store != nothing) {
    anchor.store = qz::UniqueID::fromText(store);
    if (!anchor.store) return std::nullopt;
  }
  const auto change = numberFrom(takeWord(text, ' '));
  if (!change) return std::nullopt;
  anchor.change = *change;
  std::string_view kinds = takeWord(text, ' ');
  while (!kinds.empty()) {
    const auto kind = qz::fromRawValue<Type>(takeWord(kinds, ','));
    if (!kind) return std::nullopt;
    anchor.kinds.insert(*kind);
  }
  anchor.yardstick = takeWord(text, ' ');
  if (!text.empty() && text != nothing) {
    const auto day = numberFrom(text);
    anchor.since = day ? existingDayFromStored(*day) : std::nullopt;
    if (!anchor.since) return std::nullopt;
  }
  return anchor;
}

HealthNews::HealthNews(const qz::QZHealthStore& health, const HealthMeasuring& measuring,
                       const std::optional<std::string>& kept, qz::YYYYMMDD today) {
  const auto before = kept ? HealthAnchor::fromText(*kept) : std::nullopt;
  if (before) since_ = before->since;
  qz::QZHKChanges changes = health.changesSince(before ? before->change : 0);
  hasData_ = changes.newest > 0;
  // It may come back; a task waits for it as it is.
  if (before && before->store && !changes.store && !hasData_) return;
  const std::vector<Type> types = measuring.readTypes();
  HealthAnchor now{.store = changes.store,
                   .change = changes.newest,
                   .kinds = {types.begin(), types.end()},
                   .yardstick = measuring.yardstick()};
  const bool isOtherMeasure = before && (before->kinds != now.kinds || before->yardstick != now.yardstick);
  if (isOtherMeasure) since_ = today;
  now.since = since_;
  // A text that cannot be read says that something was taken into account, but not what.
  begins_ = !kept || isOtherMeasure;
  const bool goesOn = before && before->store == now.store && before->change <= now.change;
  if (!begins_) {
    if (before && !goesOn) changes = health.changesSince(0);
    findDays(measuring, changes, goesOn);
  }
  if (std::string text = now.text(); text != kept) anchor_ = std::move(text);
  mustBeKept_ = anchor_ && (begins_ || !goesOn || lookBack(changes, now.kinds) >= longestLookBack);
}

void HealthNews::findDays(const HealthMeasuring& measuring, const qz::QZHKChanges& changes, bool goesOn) {
  for (const Type type : measuring.readTypes()) {
    if (const auto found = changes.reaches.find(type); found != changes.reaches.end())
      for (const auto& reach : found->second) (goesOn ? changed_ : vaguelyChanged_).push_back(measuring.daysOf(reach));
    if (const auto found = changes.vagueReaches.find(type); found != changes.vagueReaches.end())
      vaguelyChanged_.push_back(measuring.daysOf(found->second));
  }
}

std::optional<qz::YYYYMMDD> HealthNews::earliestDay() const {
  std::optional<qz::YYYYMMDD> earliest;
  for (const auto* all : {&changed_, &vaguelyChanged_})
    for (const Days& days : *all) earliest = std::min(earliest.value_or(days.first), days.first);
  return earliest;
}

PeriodNews HealthNews::of(const TaskFrequencyPeriod& period) const {
  const auto holds = [&](const Days& days) {
    return days.first <= period.finishDate && period.startDate <= days.second;
  };
  const bool hasChanged = std::ranges::any_of(changed_, holds);
  return {.mayHaveChanged = hasChanged || std::ranges::any_of(vaguelyChanged_, holds),
          .hasChanged = hasChanged,
          .isOfOtherMeasure = since_ && period.finishDate < *since_};
}

void HealthNews::leave() {
  changed_.clear();
  vaguelyChanged_.clear();
  if (begins_) return;
  anchor_.reset();
  mustBeKept_ = false;
}

}  // namespace habitra
