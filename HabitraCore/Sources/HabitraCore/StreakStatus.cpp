#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/StreakStatus.h>
#include <QZDateTime/CodedForm.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace habitra {

std::optional<StreakStatus::Milestone> StreakStatus::currentMilestone() const {
  static constexpr std::array<std::int64_t, 10> steps{7, 14, 30, 60, 100, 150, 200, 250, 300, 365};
  std::int64_t step = 100;
  if (current <= 399) {
    const auto above = std::upper_bound(steps.begin(), steps.end(), current);
    if (above == steps.begin()) return std::nullopt;
    step = *std::prev(above);
  }
  const std::int64_t value = current - current % step;
  return value == current ? Milestone::exact(value) : Milestone::mostRecent(value);
}

void to_json(nlohmann::json& json, const StreakStatus& streak) {
  json = {{"current", streak.current}, {"best", streak.best}};
}

void from_json(const nlohmann::json& json, StreakStatus& streak) {
  streak.current = decodeCount(json, "current");
  streak.best = decodeCount(json, "best");
}

}  // namespace habitra
