// The CSV export of Loop Habit Tracker. Habits.csv names the habits; each has a folder that begins with its number:
//
//   folder      = 3*DIGIT [" " letters]     ; the number of the habit; the letters are what is left of its name when
//                                           ; all but [ a-zA-Z0-9._-] is dropped, so only the number tells
//   Checkmarks  = "Date,Value[,Notes]" *row ; up to 2.3.0: rows alone, date and number
//   row         = YYYY-MM-DD "," value ["," notes]
//
// Up to 2.3.0 a habit has no type and its files hold a 0 for each day of which nothing is known.

#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/CSVReader.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <HabitraBackup/MovingIn/LoopHabit.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace habitra {

namespace {

/// The columns of Habits.csv in all versions.
constexpr std::array<std::string_view, 14> knownColumns{"Position",       "Name",
                                                        "Type",           "Question",
                                                        "Description",    "FrequencyNumerator",
                                                        "NumRepetitions", "FrequencyDenominator",
                                                        "Interval",       "Unit",
                                                        "Target Type",    "Target Value",
                                                        "Archived?",      "Color"};

/// A row of Habits.csv, its values by the names of the columns.
struct HabitRow {
  std::size_t line = 0;
  std::map<std::string, std::string, std::less<>> values;

  [[nodiscard]] std::string_view value(std::string_view column) const {
    const auto found = values.find(column);
    return found == values.end() ? std::string_view() : std::string_view(found->second);
  }
  [[nodiscard]] bool has(std::string_view column) const { return values.find(column) != values.end(); }
  [[noreturn]] void refuse(std::string_view column, std::string_view wanted) const {
    throw CSVError(line, column, foreign_text::found(value(column), wanted));
  }
};

class HabitRows final : public CSVReader::Handler {
 public:
  void header(std::size_t line, std::span<const std::string_view> names) override {
    columns_.assign(names.begin(), names.end());
    if (std::find(columns_.begin(), columns_.end(), "Name") == columns_.end()) {
      throw CSVError(line, {}, "no column Name found, the habits of Loop Habit Tracker were expected");
    }
  }
  void row(std::size_t line, std::span<const std::string_view> fields) override {
    if (rows.size() == foreign_limits::mostFiles) {
      throw CSVError(line, {}, fmt::format("more than {} habits found", foreign_limits::mostFiles));
    }
    HabitRow& row = rows.emplace_back();
    row.line = line;
    for (std::size_t at = 0; at < fields.size(); ++at) row.values.try_emplace(columns_[at], fields[at]);
  }

  /// The columns that nothing is known of.
  [[nodiscard]] std::vector<std::string> unknownColumns() const {
    std::vector<std::string> unknown;
    for (const std::string& column : columns_) {
      const bool isKnown = std::find(knownColumns.begin(), knownColumns.end(), column) != knownColumns.end();
      if (!isKnown && !column.empty()) unknown.push_back(column);
    }
    return unknown;
  }

  std::vector<HabitRow> rows;

 private:
  std::vector<std::string> columns_;
};

/// A row of a habit's Checkmarks.csv.
struct MarkRow {
  qz::YYYYMMDD day;
  std::int64_t value = 0;
  std::string notes;
  std::size_t line = 0;
};

class MarkRows final : public CSVReader::Handler {
 public:
  void header(std::size_t line, std::span<const std::string_view> names) override {
    hasHeader = !names.empty() && names.front() == "Date";
    if (!hasHeader) return row(line, names);
    if (names.size() < 2 || names[1] != "Value") throw CSVError(line, {}, "the columns Date and Value were expected");
    hasNotes_ = names.size() > 2 && names[2] == "Notes";
  }
  void row(std::size_t line, std::span<const std::string_view> fields) override {
    if (rows.size() == foreign_limits::mostRows) {
      throw CSVError(line, {}, fmt::format("more than {} rows found", foreign_limits::mostRows));
    }
    if (fields.size() < 2) throw CSVError(line, {}, "a date and a value were expected");
    const auto day = foreign_text::day(fields[0]);
    if (!day) throw CSVError(line, "Date", foreign_text::found(fields[0], "a day of the calendar as 2024-01-31"));
    const auto value = loop::valueOf(fields[1]);
    if (!value || *value < loop::unknown)
      throw CSVError(line, "Value", foreign_text::found(fields[1], loop::wantedMarks));
    if (!days_.insert(*day).second) throw CSVError(line, "Date", foreign_text::found(fields[0], "each day once"));
    rows.push_back({*day, *value, hasNotes_ ? std::string(fields[2]) : std::string(), line});
  }

  bool hasHeader = true;
  std::vector<MarkRow> rows;

 private:
  bool hasNotes_ = false;
  std::set<qz::YYYYMMDD> days_;
};

void readTable(const std::string& text, const std::string& name, CSVReader::Handler& handler) {
  try {
    CSVReader reader(handler);
    reader.feed(text);
    reader.finish();
  } catch (const CSVError& error) {
    throw error.in(name);
  }
}

/// The number with which the name of a habit's folder begins; none for other folders.
std::optional<std::int64_t> folderNumber(std::string_view folder) {
  const std::size_t length = std::min(folder.find_first_not_of("0123456789"), folder.size());
  if (length < 3 || (length < folder.size() && folder[length] != ' ')) return std::nullopt;
  return foreign_text::wholeNumber(folder.substr(0, length));
}

/// The name of the file with the marks, by the number of the habit.
std::map<std::int64_t, std::string> filesWithMarks(const ForeignFiles& files) {
  std::map<std::int64_t, std::string> result;
  for (const auto& [name, text] : files.all()) {
    const std::size_t slash = name.find('/');
    if (slash == std::string::npos || name.substr(slash) != "/Checkmarks.csv") continue;
    const auto number = folderNumber(std::string_view(name).substr(0, slash));
    if (!number) continue;
    if (const auto [at, isNew] = result.emplace(*number, name); !isNew) {
      throw CSVError(1, {},
                     fmt::format("a second folder of habit {}, {} was the first", *number, files.shown(at->second)))
          .in(files.shown(name));
    }
  }
  return result;
}

class LoopCSVReading {
 public:
  LoopCSVReading(const ForeignFiles& files, const ForeignHistorySettings& settings, const ExchangeProgress& progress)
      : files_(files), settings_(settings), progress_(progress), marks_(filesWithMarks(files)) {}

  ForeignHistory run() {
    const std::string name = files_.shown("Habits.csv");
    HabitRows habits;
    readTable(*files_.find("Habits.csv"), name, habits);
    history_.format = "Loop Habit Tracker, CSV";
    for (std::size_t index = 0; index < habits.rows.size(); ++index) {
      try {
        read(habits.rows[index], static_cast<std::int64_t>(index) + 1);
      } catch (const CSVError& error) {
        throw isInMarks_ ? error : error.in(name);
      }
      if (progress_) progress_("reading", static_cast<double>(index + 1) / static_cast<double>(habits.rows.size()));
    }
    for (const auto& [number, file] : marks_) {
      history_.remarks.push_back(files_.shown(file) + ": no habit of this number stands in Habits.csv; left out");
    }
    for (const std::string& column : habits.unknownColumns()) {
      history_.remarks.push_back("the column " + qz::utf8::quoted(column) + " of Habits.csv has no place here");
    }
    history_.remarks.emplace_back(loop::noColours);
    history_.remarks.emplace_back("reminders are not part of this export, the database has them");
    return std::move(history_);
  }

 private:
  static std::int64_t count(const HabitRow& row, std::string_view column, std::string_view formerColumn) {
    const std::string_view name = row.has(column) ? column : formerColumn;
    if (!row.has(name)) return 1;
    const auto count = foreign_text::wholeNumber(row.value(name));
    if (!count || *count < 1) row.refuse(name, "a whole number from 1 on");
    return *count;
  }

  /// The number of the habit's folder.
  std::int64_t position(const HabitRow& row, std::int64_t place) {
    if (!row.has("Position")) return place;
    const auto number = foreign_text::wholeNumber(row.value("Position"));
    if (!number) row.refuse("Position", "a whole number");
    if (!positions_.insert(*number).second) row.refuse("Position", "each habit once");
    return *number;
  }

  /// Whether the column says the one word and not the other; the first one where the file has none.
  static bool says(const HabitRow& row, std::string_view column, std::string_view word, std::string_view other) {
    const std::string_view value = row.value(column);
    if (value == word) return true;
    if (!value.empty() && value != other) row.refuse(column, fmt::format("{} or {}", other, word));
    return false;
  }

  static loop::Settings settingsOf(const HabitRow& row) {
    loop::Settings settings;
    if (says(row, "Type", "NUMERICAL", "YES_NO")) settings.kind = loop::HabitKind::measured;
    settings.times = count(row, "FrequencyNumerator", "NumRepetitions");
    settings.days = count(row, "FrequencyDenominator", "Interval");
    settings.isLimit = says(row, "Target Type", "AT_MOST", "AT_LEAST");
    settings.isArchived = says(row, "Archived?", "true", "false");
    settings.unit = row.value("Unit");
    settings.question = row.value("Question");
    settings.description = row.value("Description");
    if (settings.kind == loop::HabitKind::measured) {
      const auto target = foreign_text::number(row.value("Target Value"));
      if (!target) row.refuse("Target Value", "a number");
      settings.target = *target;
    }
    return settings;
  }

  void read(const HabitRow& row, std::int64_t place) {
    ForeignHabit habit{std::string(row.value("Name"))};
    loop::apply(settingsOf(row), habit);
    const auto file = marks_.find(position(row, place));
    if (file == marks_.end()) {
      habit.remark("the export has no folder of this habit, so none of its days");
    } else {
      isInMarks_ = true;
      readMarks(file->second, row, habit);
      isInMarks_ = false;
      marks_.erase(file);
    }
    std::move(habit).moveInto(history_, settings_);
  }

  void readMarks(const std::string& file, const HabitRow& row, ForeignHabit& habit) {
    const std::string& text = *files_.find(file);
    if (text.empty()) return;
    MarkRows marks;
    readTable(text, files_.shown(file), marks);
    loop::HabitKind kind = row.value("Type") == "NUMERICAL" ? loop::HabitKind::measured : loop::HabitKind::ticked;
    if (!row.has("Type")) return addUntyped(marks.rows, habit);
    for (const MarkRow& mark : marks.rows) {
      if (!loop::isPossible(kind, mark.value)) {
        throw CSVError(mark.line, "Value", foreign_text::found(fmt::format("{}", mark.value), loop::wantedMarks))
            .in(files_.shown(file));
      }
      // Without a header the file holds a 0 for each day of which nothing is known.
      if (marks.hasHeader || mark.value != loop::no) loop::addDay(habit, kind, mark.day, mark.value);
      habit.addNote(mark.day, mark.notes);
    }
  }

  /// Marks of a habit of which the export does not say whether it is measured: a number that is no mark tells.
  static void addUntyped(const std::vector<MarkRow>& marks, ForeignHabit& habit) {
    const bool isMeasured =
        std::any_of(marks.begin(), marks.end(), [](const MarkRow& mark) { return mark.value > loop::skipped; });
    if (isMeasured) habit.remark("the export has amounts but no target; each day with an amount counts as completed");
    for (const MarkRow& mark : marks) {
      habit.addNote(mark.day, mark.notes);
      if (mark.value == loop::no) continue;
      if (isMeasured && mark.value > loop::no && mark.value != loop::skipped) {
        const double amount = static_cast<double>(mark.value) / ForeignHabit::thousandthsInOne;
        habit.add(TaskLogEntryType::completedManuallyFull, mark.day, amount);
      } else {
        loop::addDay(habit, loop::HabitKind::ticked, mark.day, mark.value);
      }
    }
  }

  const ForeignFiles& files_;
  const ForeignHistorySettings& settings_;
  const ExchangeProgress& progress_;
  std::map<std::int64_t, std::string> marks_;  // those that no habit has taken yet
  std::set<std::int64_t> positions_;           // of the habits so far
  bool isInMarks_ = false;                     // whether errors bear the name of their file already
  ForeignHistory history_;
};

}  // namespace

ForeignHistory readLoopCSV(const ForeignFiles& files, const ForeignHistorySettings& settings,
                           const ExchangeProgress& progress) {
  return LoopCSVReading(files, settings, progress).run();
}

bool isTableOfLoop(std::string_view header) {
  const auto names = [&header](std::string_view column) {
    return fmt::format(",{},", header).find(fmt::format(",{},", column)) != std::string::npos;
  };
  if (names("title")) return false;  // a task history of our own
  if (names("Name") && (names("FrequencyNumerator") || names("NumRepetitions"))) return true;
  // Those of all habits together end each row with a comma.
  return header.starts_with("Date,Value") || header == "Date,Score" ||
         (header.starts_with("Date,") && header.ends_with(','));
}

}  // namespace habitra
