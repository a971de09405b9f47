#include <HabitraCore/AutomaticTaskType/ScreenTimeUse.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace habitra {
namespace {

using Type = qz::QZHKObjectType;

constexpr std::array usageTypes{Type::applicationUsage, Type::websiteUsage, Type::categoryUsage};

/// Where the use of one kind changes, as seconds of use in a microsecond.
struct Change {
  qz::Moment moment;
  std::size_t kind;
  double difference;
};

}  // namespace

std::set<std::string> selectedSources(const FamilyActivitySelection& selection, Type type) {
  switch (type) {
    case Type::applicationUsage: return selection.applications;
    case Type::websiteUsage: return selection.webDomains;
    case Type::categoryUsage: return selection.categories;
    default: return {};
  }
}

double usedSeconds(const qz::QZHKSpan& span, std::span<const qz::QZHKSample> samples) {
  std::vector<Change> changes;
  for (const qz::QZHKSample& sample : samples) {
    const auto kind = std::ranges::find(usageTypes, sample.objectType);
    const auto amount = sample.quantity();
    if (kind == usageTypes.end() || !amount || sample.start >= sample.end) continue;
    const double seconds = amount->valueIn(qz::QZHKUnit::second).value_or(0);
    const double density = seconds / static_cast<double>((sample.end - sample.start).count());
    const auto at = static_cast<std::size_t>(kind - usageTypes.begin());
    changes.push_back({std::max(sample.start, span.from), at, density});
    changes.push_back({std::min(sample.end, span.to), at, -density});
  }
  std::ranges::stable_sort(changes, {}, &Change::moment);
  std::array<double, usageTypes.size()> densities{};
  double used = 0;
  for (std::size_t i = 0; i + 1 < changes.size(); ++i) {
    densities[changes[i].kind] += changes[i].difference;
    const auto length = static_cast<double>((changes[i + 1].moment - changes[i].moment).count());
    used += std::max(*std::ranges::max_element(densities), 0.0) * length;
  }
  // To the millisecond: an hour that was put together from parts is a whole one.
  return std::round(used * 1'000) / 1'000;
}

}  // namespace habitra
