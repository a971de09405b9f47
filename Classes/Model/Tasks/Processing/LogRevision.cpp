#include <HabitraModel/Tasks/Processing/LogRevision.h>

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace habitra {

void LogRevision::applyTo(std::vector<LoggedEntry>& entries, std::int32_t first, std::int32_t last) const {
  if (isEmpty()) return;
  std::unordered_set<std::int64_t> gone;
  for (const LogKey& key : removed) gone.insert(rawValue(key.objectID));
  for (const LoggedEntry& entry : added) gone.insert(entry.order);
  std::erase_if(entries, [&](const LoggedEntry& entry) { return gone.contains(entry.order); });
  std::ranges::copy_if(added, std::back_inserter(entries),
                       [&](const LoggedEntry& entry) { return first <= entry.entryDate && entry.entryDate <= last; });
  std::ranges::sort(entries, {}, [](const LoggedEntry& entry) { return std::pair(entry.entryDate, entry.order); });
}

}  // namespace habitra
