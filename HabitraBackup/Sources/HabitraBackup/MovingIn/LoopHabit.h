#pragma once

#include <HabitraBackup/MovingIn/ForeignHabit.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// What both exports of Loop Habit Tracker have in common: the whole numbers that stand for what a day holds. Of a
/// habit that is ticked they are marks; of a measured one thousandths of an amount, but for unknown and skipped days.
namespace habitra::loop {

inline constexpr std::int64_t unknown = -1;
inline constexpr std::int64_t no = 0;
inline constexpr std::int64_t yesAutomatic = 1;  ///< derived: the frequency asked for nothing on that day
inline constexpr std::int64_t yes = 2;
inline constexpr std::int64_t skipped = 3;

enum class HabitKind { ticked, measured };

/// The mark of a name ("YES_MANUAL") or number ("2"); none for anything else.
[[nodiscard]] std::optional<std::int64_t> valueOf(std::string_view text);

/// What is wrong with a value for a kind, for messages; none where it is good.
[[nodiscard]] bool isPossible(HabitKind kind, std::int64_t value);
inline constexpr std::string_view wantedMarks = "one of -1, 0, 1, 2, 3 or UNKNOWN, NO, YES_AUTO, YES_MANUAL, SKIP";

/// Adds what a day says. Unknown days and derived ticks say nothing. REQUIRES: the value is possible for the kind.
void addDay(ForeignHabit& habit, HabitKind kind, const qz::YYYYMMDD& day, std::int64_t value);

/// The settings of a habit, in the words of the export.
struct Settings {
  HabitKind kind = HabitKind::ticked;
  std::int64_t times = 1;
  std::int64_t days = 1;
  bool isLimit = false;
  double target = 0.0;
  std::string_view unit;
  std::string_view question;
  std::string_view description;
  bool isArchived = false;
};

/// REQUIRES: times and days >= 1, a finite target.
void apply(const Settings& settings, ForeignHabit& habit);

inline constexpr std::string_view noColours = "the colours of the habits have no place here";

}  // namespace habitra::loop
