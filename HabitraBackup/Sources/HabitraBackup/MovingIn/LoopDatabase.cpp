// The database of Loop Habit Tracker, layouts 12 to 25. What a layout lacks reads as NULL: `value` of a repetition came
// later than 12 (each was a tick), so did type, target, unit, question, uuid and notes. The moment of a repetition is
// midnight in UTC of the day that the device showed.

#include <HabitraBackup/DerivedIdentifier.h>
#include <HabitraBackup/MovingIn/ForeignDatabase.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <HabitraBackup/MovingIn/LoopHabit.h>

#include <fmt/core.h>
#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace habitra {

namespace {

using Row = ForeignDatabase::Row;

constexpr std::int64_t oldestLayout = 12;
constexpr std::int64_t newestLayout = 25;
constexpr std::int64_t millisecondsPerDay = 86'400'000;

/// 32 hexadecimal digits, with or without hyphens.
std::optional<qz::UniqueID> identifier(std::string text) {
  if (text.size() == 32) {
    for (const std::size_t at : {8U, 13U, 18U, 23U}) text.insert(at, 1, '-');
  }
  return qz::UniqueID::fromText(text);
}

/// The weekdays of its bits: Saturday 1, Sunday 2 to Friday 64.
qz::DaysOfWeek weekdays(std::int64_t bits) {
  qz::DaysOfWeek days;
  for (std::int64_t bit = 0; bit < 7; ++bit) {
    if ((bits >> bit & 1) != 0) days.insert(qz::DayOfWeek(qz::DayOfWeek::saturday).add(bit));
  }
  return days;
}

class LoopDatabaseReading {
 public:
  LoopDatabaseReading(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                      const ExchangeProgress& progress)
      : database_(database),
        settings_(settings),
        progress_(progress),
        hasQuestions_(database.hasColumn("Habits", "question")),
        hasValues_(database.hasColumn("Repetitions", "value")) {}

  ForeignHistory run() {
    history_.format = "Loop Habit Tracker, database";
    database_.wantVersion(oldestLayout, newestLayout);
    database_.forEachRow(
        "Habits",
        {"id", "name", "position", "archived", "type", "freq_num", "freq_den", "target_type", "target_value", "unit",
         "question", "description", "uuid", "reminder_hour", "reminder_min", "reminder_days"},
        [this](const Row& row) { readHabit(row); });
    database_.forEachRow(
        "Repetitions", {"id", "habit", "timestamp", "value", "notes"}, [this](const Row& row) { readRepetition(row); },
        progress_);
    std::stable_sort(habits_.begin(), habits_.end(),
                     [](const Read& a, const Read& b) { return a.position < b.position; });
    for (Read& read : habits_) {
      read.habit.remarkContradictions(read.contradicted, "first");
      std::move(read.habit).moveInto(history_, settings_);
    }
    if (numHomeless_ > 0) {
      history_.remarks.push_back(foreign_text::counted(numHomeless_, "entry belongs", "entries belong") +
                                 " to no habit or no day; left out");
    }
    history_.remarks.emplace_back(loop::noColours);
    return std::move(history_);
  }

 private:
  struct Day {
    std::int64_t value;
    std::string note;
  };
  struct Read {
    ForeignHabit habit;
    loop::HabitKind kind;
    std::int64_t position;
    std::map<qz::YYYYMMDD, Day> days = {};  // of which something is known
    std::set<qz::YYYYMMDD> contradicted = {};
  };

  static bool is(const Row& row, int column, std::string_view wanted) {
    const std::int64_t value = row.integer(column).value_or(0);
    if (value != 0 && value != 1) row.refuse(column, wanted);
    return value == 1;
  }

  static std::int64_t count(const Row& row, int column) {
    const std::int64_t value = row.integer(column).value_or(1);
    if (value < 1) row.refuse(column, "a whole number from 1 on");
    return value;
  }

  void readHabit(const Row& row) {
    const std::string unit = row.text(9).value_or(std::string());
    const std::string question = row.text(10).value_or(std::string());
    const std::string description = row.text(11).value_or(std::string());
    loop::Settings settings;
    settings.isArchived = row.integer(3).value_or(0) != 0;
    if (is(row, 4, "0 (yes or no) or 1 (measured)")) settings.kind = loop::HabitKind::measured;
    settings.times = count(row, 5);
    settings.days = count(row, 6);
    settings.isLimit = is(row, 7, "0 (at least) or 1 (at most)");
    settings.target = row.number(8).value_or(0.0);
    settings.unit = unit;
    // Before a question had a column of its own, the description was the question.
    settings.question = hasQuestions_ ? question : description;
    settings.description = hasQuestions_ ? description : std::string_view();

    ForeignHabit habit(row.text(1).value_or(std::string()));
    const auto uuid = row.text(12);
    const auto uniqueId = uuid ? identifier(*uuid) : std::nullopt;
    if (uniqueId && !identifiers_.insert(*uniqueId).second) row.refuse(12, "each identifier once");
    habit.setIdentifier(uniqueId);
    loop::apply(settings, habit);
    readReminder(row, habit);
    const std::int64_t id = row.wantedInteger(0);
    if (!places_.emplace(id, habits_.size()).second) row.refuse(0, "each habit once");
    habits_.push_back({std::move(habit), settings.kind, row.integer(2).value_or(id)});
  }

  static void readReminder(const Row& row, ForeignHabit& habit) {
    const auto hour = row.integer(13);
    const auto minute = row.integer(14);
    const qz::DaysOfWeek days = weekdays(row.integer(15).value_or(0));
    if (!hour || !minute || days.isEmpty()) return;
    if (*hour < 0 || *hour > 23) row.refuse(13, "an hour from 0 to 23");
    if (*minute < 0 || *minute > 59) row.refuse(14, "a minute from 0 to 59");
    TaskReminder reminder{.uniqueId =
                              identifierOfText(fmt::format("reminder\n{}\n{}", row.wantedInteger(0), habit.title()))};
    reminder.trigger.timeOfDay = qz::HHMMSS::fromRawValue(*hour * 3600 + *minute * 60);
    reminder.daysOfWeek = days;
    habit.addReminder(reminder);
  }

  void readRepetition(const Row& row) {
    const auto habit = row.integer(1);
    const auto milliseconds = row.integer(2);
    const auto place = habit ? places_.find(*habit) : places_.end();
    if (place == places_.end() || !milliseconds) {
      ++numHomeless_;
      return;
    }
    constexpr std::int64_t lastDay = 2'932'896;  // 9999-12-31
    const std::int64_t number = *milliseconds / millisecondsPerDay;
    if (*milliseconds < 0 || *milliseconds % millisecondsPerDay != 0 || number > lastDay) {
      row.refuse(2, "midnight of a day in milliseconds since 1970");
    }
    Read& read = habits_[place->second];
    const std::int64_t value = hasValues_ ? row.integer(3).value_or(loop::yes) : loop::yes;
    if (!loop::isPossible(read.kind, value)) row.refuse(3, loop::wantedMarks);
    addDay(read, qz::YYYYMMDD::fromDayNumber(number), {value, row.text(4).value_or(std::string())});
  }

  /// Of two repetitions of a day the program itself keeps the first; the note of the other is kept as well.
  static void addDay(Read& read, const qz::YYYYMMDD& day, const Day& said) {
    const auto [first, isFirst] = read.days.try_emplace(day, said);
    if (isFirst) loop::addDay(read.habit, read.kind, day, said.value);
    if (isFirst || first->second.note != said.note) read.habit.addNote(day, said.note);
    if (first->second.value != said.value) read.contradicted.insert(day);
  }

  const ForeignDatabase& database_;
  const ForeignHistorySettings& settings_;
  const ExchangeProgress& progress_;
  bool hasQuestions_;
  bool hasValues_;
  std::vector<Read> habits_;
  std::unordered_map<std::int64_t, std::size_t> places_;  // in habits_, by the key of the row
  std::unordered_set<qz::UniqueID> identifiers_;
  std::size_t numHomeless_ = 0;
  ForeignHistory history_;
};

}  // namespace

ForeignHistory readLoopDatabase(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                                const ExchangeProgress& progress) {
  return LoopDatabaseReading(database, settings, progress).run();
}

}  // namespace habitra
