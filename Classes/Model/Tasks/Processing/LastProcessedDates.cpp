#include <HabitraModel/Tasks/Processing/LastProcessedDates.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <utility>

namespace habitra {
namespace {

using Values = KeyValueDefaults::Values;

/// The dictionary among the values, none where something else stands there.
const Values* dictionary(const Values& values) {
  const auto found = values.find(LastProcessedDates::key);
  return found == values.end() ? nullptr : found->second.as<Values>();
}

}  // namespace

LastProcessedDates::Dates LastProcessedDates::read() const {
  const Values values = defaults_.values();
  Dates dates;
  if (const Values* kept = dictionary(values))
    for (const auto& [task, date] : *kept)
      if (const auto* moment = date.as<qz::Moment>()) dates.emplace(task, *moment);
  return dates;
}

void LastProcessedDates::merge(const Dates& processed) {
  if (processed.empty()) return;
  defaults_.update([&](Values& values) {
    const Values* kept = dictionary(values);
    Values dates = kept ? *kept : Values();
    for (const auto& [task, date] : processed) dates.insert_or_assign(task, date);
    values.insert_or_assign(std::string(key), std::move(dates));
  });
}

void LastProcessedDates::removeStale(const std::set<std::string>& tasks) {
  const auto isStale = [&](const auto& date) { return !tasks.contains(date.first); };
  const Dates dates = read();
  if (std::none_of(dates.begin(), dates.end(), isStale)) return;
  qz::log::info("Removing stale entries");
  defaults_.update([&](Values& values) {
    const Values* kept = dictionary(values);
    Values present = kept ? *kept : Values();
    std::erase_if(present, isStale);
    values.insert_or_assign(std::string(key), std::move(present));
  });
}

}  // namespace habitra
