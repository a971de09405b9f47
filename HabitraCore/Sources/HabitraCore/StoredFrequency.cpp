#include <HabitraCore/StoredFrequency.h>
#include <HabitraCore/TaskFrequencyValidation.h>
#include <QZKit/Checked.h>

#include <algorithm>

namespace habitra {

namespace {

using Mode = TaskFrequency::DayMode;

/// Which of the frequency's counts `daysPerWeek` holds in a mode; none where the mode uses neither.
std::int64_t TaskFrequency::*countInDaysPerWeek(Mode mode) {
  switch (mode) {
    case Mode::specificDaysOfWeek:
    case Mode::specificDaysOfMonth: return nullptr;
    case Mode::dayInterval: return &TaskFrequency::dayInterval;
    case Mode::numberOfDaysInWeek:
    case Mode::numberOfDaysInMonth:
    case Mode::numberOfDaysInYear:
    case Mode::numberOfDaysInFortnight:
    case Mode::aggregateOverWeek:
    case Mode::aggregateOverMonth:
    case Mode::aggregateOverFortnight:
    case Mode::aggregateOverYear: break;
  }
  return &TaskFrequency::numCompletions;
}

}  // namespace

StoredFrequency stored(const TaskFrequency& frequency) {
  StoredFrequency columns;
  columns.daysMode = rawValue(frequency.dayMode);
  columns.daysOfWeek = frequency.days.rawValue();
  if (const auto count = countInDaysPerWeek(frequency.dayMode)) {
    columns.daysPerWeek = qz::checkedNarrow<std::int16_t>(frequency.*count);
  }
  columns.daysTimesPerDay = qz::checkedNarrow<std::int16_t>(frequency.numPartialCompletions);
  columns.daysOfMonth = frequency.daysOfMonth.rawValue();
  return columns;
}

std::optional<TaskFrequency> frequency(const StoredFrequency& stored) {
  const auto mode = fromRawValue<Mode>(stored.daysMode);
  if (!mode) return std::nullopt;
  TaskFrequency frequency;
  frequency.dayMode = *mode;
  // Bits beyond the seven weekdays mean nothing.
  frequency.days = qz::DaysOfWeek::fromRawValue(stored.daysOfWeek & 127).value_or(qz::DaysOfWeek());
  frequency.daysOfMonth = DaysOfMonth(stored.daysOfMonth);
  frequency.numPartialCompletions = std::max(stored.daysTimesPerDay, std::int16_t{1});
  if (const auto count = countInDaysPerWeek(*mode)) {
    frequency.*count = std::max(stored.daysPerWeek, std::int16_t{1});
  }
  if (!canBe(frequency)) return std::nullopt;
  return frequency;
}

}  // namespace habitra
