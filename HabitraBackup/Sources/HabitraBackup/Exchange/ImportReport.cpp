#include <HabitraBackup/Exchange/ImportReport.h>

#include <algorithm>

namespace habitra {
namespace {

template <typename Counts>
Counts sumOf(const std::vector<ImportReport::Task>& tasks, Counts ImportReport::Task::*counts) {
  Counts sum;
  for (const ImportReport::Task& task : tasks) sum += task.*counts;
  return sum;
}

}  // namespace

ImportReport::Entries& ImportReport::Entries::operator+=(const Entries& more) {
  added += more.added;
  changed += more.changed;
  removed += more.removed;
  left += more.left;
  passedOver += more.passedOver;
  afterToday += more.afterToday;
  return *this;
}

ImportReport::Rows& ImportReport::Rows::operator+=(const Rows& more) {
  added += more.added;
  changed += more.changed;
  removed += more.removed;
  left += more.left;
  passedOver += more.passedOver;
  return *this;
}

std::size_t ImportReport::count(Outcome outcome) const {
  const auto meets = [outcome](const Task& task) { return task.outcome == outcome; };
  return static_cast<std::size_t>(std::ranges::count_if(tasks, meets));
}

ImportReport::Entries ImportReport::entries() const { return sumOf(tasks, &Task::entries); }
ImportReport::Rows ImportReport::notes() const { return sumOf(tasks, &Task::notes); }
ImportReport::Rows ImportReport::parts() const { return sumOf(tasks, &Task::parts); }

}  // namespace habitra
