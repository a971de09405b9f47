#include <HabitraCore/RawValue.h>
#include <HabitraModel/Tasks/Processing/HealthNews.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace habitra {
namespace {

using Type = qz::QZHKObjectType;

constexpr std::string_view noStore = "-";

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
  return fmt::format("{} {} {}", store ? store->text() : std::string(noStore), change, fmt::join(names, ","));
}

std::optional<HealthAnchor> HealthAnchor::fromText(std::string_view text) {
  HealthAnchor anchor;
  const std::string_view store = takeWord(text, ' ');
  if (store != noStore) {
    anchor.store = qz::UniqueID::fromText(store);
    if (!anchor.store) return std::nullopt;
  }
  const auto change = numberFrom(takeWord(text, ' '));
  if (!change) return std::nullopt;
  anchor.change = *change;
  while (!text.empty()) {
    const auto kind = qz::fromRawValue<Type>(takeWord(text, ','));
    if (!kind) return std::nullopt;
    anchor.kinds.insert(*kind);
  }
  return anchor;
}

HealthNews::HealthNews(const qz::QZHealthStore& health, const HealthMeasuring& measuring,
                       const std::optional<std::string>& kept) {
  const auto before = kept ? HealthAnchor::fromText(*kept) : std::nullopt;
  qz::QZHKChanges changes = health.changesSince(before ? before->change : 0);
  // It may come back; a task waits for it as it is.
  if (before && before->store && !changes.store && changes.newest == 0) return;
  const std::vector<Type> types = measuring.readTypes();
  const HealthAnchor now{.store = changes.store, .change = changes.newest, .kinds = {types.begin(), types.end()}};
  // A text that cannot be read says that something was taken into account, but not what.
  begins_ = !kept || (before && before->kinds != now.kinds);
  const bool goesOn = before && before->store == now.store && before->change <= now.change;
  if (!begins_) {
    if (before && !goesOn) changes = health.changesSince(0);
    days_ = measuring.daysOf(changes);
  }
  if (std::string text = now.text(); text != kept) anchor_ = std::move(text);
  mustBeKept_ = anchor_ && (begins_ || !goesOn || lookBack(changes, now.kinds) >= longestLookBack);
}

bool HealthNews::mayHaveChanged(const TaskFrequencyPeriod& period) const {
  return days_ && *days_->minDate <= period.finishDate && period.startDate <= *days_->maxDate;
}

void HealthNews::leave() {
  days_.reset();
  if (begins_) return;
  anchor_.reset();
  mustBeKept_ = false;
}

}  // namespace habitra
