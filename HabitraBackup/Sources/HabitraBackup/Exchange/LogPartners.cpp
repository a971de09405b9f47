#include <HabitraBackup/Exchange/LogPartners.h>

#include <algorithm>
#include <chrono>
#include <tuple>
#include <type_traits>
#include <utility>

namespace habitra {

namespace {

using DayAndType = std::tuple<std::int32_t, std::int16_t>;
using DayTypeAndSecond = std::tuple<std::int32_t, std::int16_t, std::int64_t>;

DayAndType dayAndType(const HabitraJSONBackupTaskEntry& entry) {
  return {entry.entryDate.intValue(), rawValue(entry.entryType)};
}
DayAndType dayAndType(const LogCandidate& entry) { return {entry.key.entryDate, entry.entryType}; }

template <typename Entry>
std::optional<DayTypeAndSecond> dayTypeAndSecond(const Entry& entry) {
  if (!entry.createdTimestamp) return std::nullopt;
  const auto second = std::chrono::floor<std::chrono::seconds>(*entry.createdTimestamp).time_since_epoch().count();
  return std::tuple_cat(dayAndType(entry), std::tuple<std::int64_t>(second));
}

template <typename Entry>
std::optional<qz::UniqueID> identifier(const Entry& entry) {
  return entry.uniqueId;
}

// The day and type of those that have, or have not, a moment of making.
template <bool isMade>
constexpr auto dayAndTypeIfMade = [](const auto& entry) -> std::optional<DayAndType> {
  if (entry.createdTimestamp.has_value() != isMade) return std::nullopt;
  return dayAndType(entry);
};

// The entries without a partner that have a key, by key, then as they stand.
template <typename Entries, typename KeyOf, typename IsPaired>
auto sortedByKey(const Entries& entries, KeyOf keyOf, IsPaired isPaired) {
  using Key = typename std::invoke_result_t<KeyOf, decltype(entries[0])>::value_type;
  std::vector<std::pair<Key, std::size_t>> result;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    if (isPaired(index)) continue;
    if (const auto key = keyOf(entries[index])) result.emplace_back(*key, index);
  }
  std::ranges::sort(result);
  return result;
}

}  // namespace

LogPartners::LogPartners(std::span<const HabitraJSONBackupTaskEntry> wanted, std::span<const LogCandidate> stored)
    : wanted_(wanted), stored_(stored), partnerOf_(wanted.size()), isTaken_(stored.size()) {
  if (stored.empty()) return;
  const auto byIdentifier = [](const auto& entry) { return identifier(entry); };
  const auto bySecond = [](const auto& entry) { return dayTypeAndSecond(entry); };
  pair(byIdentifier, byIdentifier);
  pair(bySecond, bySecond);
  pair(dayAndTypeIfMade<false>, dayAndTypeIfMade<false>);
  pair(dayAndTypeIfMade<false>, dayAndTypeIfMade<true>);
  pair(dayAndTypeIfMade<true>, dayAndTypeIfMade<false>);
}

template <typename WantedKey, typename StoredKey>
void LogPartners::pair(WantedKey wantedKey, StoredKey storedKey) {
  const auto wanted =
      sortedByKey(wanted_, wantedKey, [this](std::size_t index) { return partnerOf_[index].has_value(); });
  const auto stored = sortedByKey(stored_, storedKey, [this](std::size_t index) { return bool{isTaken_[index]}; });
  auto candidate = stored.begin();
  for (const auto& [key, index] : wanted) {
    while (candidate != stored.end() && candidate->first < key) ++candidate;
    if (candidate == stored.end()) return;
    if (candidate->first != key) continue;
    partnerOf_[index] = candidate->second;
    isTaken_[candidate->second] = true;
    ++candidate;
  }
}

}  // namespace habitra
