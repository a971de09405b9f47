#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Tasks/TaskTitle.h>

namespace habitra {

std::string shownTitle(const TaskEntity& task) {
  const std::string words = task.title.value_or(std::string());
  const auto type = words.empty() ? std::nullopt : automaticTypeOf(task);
  if (!type) return words;
  const auto frequency = frequencyOf(task);
  const auto shown = type->displayTitleForTargetQuantity(
      {.customText = words,
       .isNegative = task.isNegative,
       .numPartialCompletions = frequency ? frequency->numPartialCompletionsPerPeriod() : 1});
  return shown.title() != nullptr ? shown.text() : words;
}

}  // namespace habitra
