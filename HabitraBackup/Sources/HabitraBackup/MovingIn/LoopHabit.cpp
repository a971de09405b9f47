#include <HabitraBackup/MovingIn/ForeignText.h>
#include <HabitraBackup/MovingIn/LoopHabit.h>

#include <array>
#include <utility>

namespace habitra::loop {

namespace {

constexpr std::array<std::pair<std::string_view, std::int64_t>, 5> names{{
    {"UNKNOWN", unknown},
    {"NO", no},
    {"YES_AUTO", yesAutomatic},
    {"YES_MANUAL", yes},
    {"SKIP", skipped},
}};

}  // namespace

std::optional<std::int64_t> valueOf(std::string_view text) {
  for (const auto& [name, value] : names) {
    if (name == text) return value;
  }
  return foreign_text::wholeNumber(text);
}

bool isPossible(HabitKind kind, std::int64_t value) {
  return value >= unknown && (kind == HabitKind::measured || value <= skipped);
}

void addDay(ForeignHabit& habit, HabitKind kind, const qz::YYYYMMDD& day, std::int64_t value) {
  if (value == skipped) return habit.add(TaskLogEntryType::skippedManuallyFull, day);
  if (value == unknown) return;
  if (kind == HabitKind::measured) return habit.addAmount(day, value);
  if (value == yes) habit.add(TaskLogEntryType::completedManuallyFull, day);
  if (value == no) habit.add(TaskLogEntryType::missedManuallyFull, day);
}

void apply(const Settings& settings, ForeignHabit& habit) {
  if (settings.kind == HabitKind::measured) {
    // A measured habit has its target once in so many days, whatever the first number says.
    habit.setTarget({settings.target, std::string(settings.unit), settings.isLimit, settings.days});
  } else {
    habit.setTimesInDays(settings.times, settings.days);
  }
  if (settings.isArchived) habit.setArchived();
  habit.remarkNoPlace("question", settings.question);
  habit.remarkNoPlace("description", settings.description);
}

}  // namespace habitra::loop
