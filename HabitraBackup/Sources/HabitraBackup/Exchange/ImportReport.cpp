#include <HabitraBackup/Exchange/ImportReport.h>

#include <algorithm>

namespace habitra {

std::size_t ImportReport::count(Outcome outcome) const {
  const auto meets = [outcome](const Task& task) { return task.outcome == outcome; };
  return static_cast<std::size_t>(std::ranges::count_if(tasks, meets));
}

ImportReport::Entries ImportReport::entries() const {
  Entries sum;
  for (const Task& task : tasks) {
    sum.added += task.entries.added;
    sum.changed += task.entries.changed;
    sum.removed += task.entries.removed;
    sum.left += task.entries.left;
    sum.afterToday += task.entries.afterToday;
  }
  return sum;
}

}  // namespace habitra
