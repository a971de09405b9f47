#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Tasks/Processing/SharedTaskSummary.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace habitra {
namespace {

/// Left to right, apart from what surrounds it, and the end of that.
constexpr const char* isolate = "\u2066";
constexpr const char* endOfIsolate = "\u2069";

/// Rounded down, so that 100% means done.
std::string share(const CompletionStatus& status, const char* none) {
  const double percent = std::floor(std::clamp(status.codableProgress.progressShare(), 0.0, 1.0) * 100);
  return percent >= 1 ? fmt::format("{:.0f}%", percent) : none;
}

std::string words(const CompletionStatus& status) {
  using Kind = CompletionStatus::Status::Kind;
  switch (status.status.kind()) {
    case Kind::positiveComplete: return "Done";
    case Kind::positiveIncomplete: return share(status, "Not done yet");
    case Kind::positiveSkip: return "Skipped";
    case Kind::positiveMiss:
    case Kind::negativeMiss: return "Missed";
    case Kind::negativeAllowedMiss: return "Allowed miss";
    case Kind::negativeComplete: break;
  }
  return share(status, "Clean");
}

}  // namespace

std::string todayStatus(const CompletionStatus& status, LayoutDirection layoutDirection) {
  const std::string text = words(status);
  return layoutDirection == LayoutDirection::rightToLeft ? isolate + text + endOfIsolate : text;
}

std::optional<TaskCloudSummary> cloudSummary(const TaskEntity& task, const TaskFigures& figures,
                                             LayoutDirection layoutDirection, qz::Moment now) {
  const auto id = task.uniqueId ? qz::UniqueID::fromText(*task.uniqueId) : std::nullopt;
  if (!id) return std::nullopt;
  return TaskCloudSummary{.uniqueId = *id,
                          .title = task.title,
                          .imageName = task.imageName,
                          .colorInfo = task.colorInfo,
                          .isNegative = task.isNegative,
                          .frequency = frequencyOf(task),
                          .activeStreak = figures.streak.current,
                          .bestStreak = figures.streak.best,
                          .todayStatus = todayStatus(figures.completionStatus, layoutDirection),
                          .updated = now};
}

}  // namespace habitra
