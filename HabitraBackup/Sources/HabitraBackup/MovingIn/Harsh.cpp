// The two text files of harsh.
//
//   habits    = *(habit / heading / remark / empty)
//   habit     = name ": " frequency        ; n: once in n days; n/m: n times in m days; 0: only recorded
//   heading   = "!" text                   ; of the habits below it
//   remark    = "#" text
//   log       = *(entry / remark / empty)
//   entry     = YYYY-MM-DD " : " name " : " ("y" / "n" / "s") [" : " comment [" : " amount]]
//                                          ; at the end of a line " :" is enough
//
// The last entry of a habit for a day is the one that counts. An amount of 0 is none.

#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHabit.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/Error.h>

#include <fmt/core.h>
#include <map>
#include <unordered_map>
#include <utility>

namespace habitra {

namespace {

struct LogLine {
  TaskLogEntryType type;
  std::string comment;
  std::optional<double> amount;
};

constexpr std::string_view separator = " :";  // and a blank, or the end of a line of which an editor cut the blanks

/// The fields with the blanks around them: two separators may share one.
std::vector<std::string_view> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t begin = 0;
  for (std::size_t end = line.find(separator); end != std::string_view::npos; end = line.find(separator, end + 1)) {
    const std::size_t next = end + separator.size();
    if (next < line.size() && line[next] != ' ') continue;
    fields.push_back(line.substr(begin, end - begin));
    begin = next;
  }
  fields.push_back(line.substr(begin));
  return fields;
}

std::optional<TaskLogEntryType> typeOf(std::string_view result) {
  if (result == "y") return TaskLogEntryType::completedManuallyFull;
  if (result == "n") return TaskLogEntryType::missedManuallyFull;
  if (result == "s") return TaskLogEntryType::skippedManuallyFull;
  return std::nullopt;
}

/// The fields from the fourth on: a comment, which may hold the separator itself, and after it perhaps an amount.
LogLine said(TaskLogEntryType type, const std::vector<std::string_view>& fields) {
  LogLine line{type, {}, std::nullopt};
  std::size_t end = fields.size();
  if (end > 4) {
    const std::string_view last = foreign_text::trimmed(fields.back());
    line.amount = foreign_text::number(last);
    if (line.amount || last.empty()) --end;
    if (line.amount == 0.0) line.amount.reset();
  }
  for (std::size_t at = 3; at < end; ++at) {
    if (at > 3) line.comment += separator;
    line.comment += fields[at];
  }
  line.comment = std::string(foreign_text::trimmed(line.comment));
  return line;
}

class HarshReading {
 public:
  HarshReading(const ForeignFiles& files, const ForeignHistorySettings& settings, const ExchangeProgress& progress)
      : files_(files), settings_(settings), progress_(progress) {}

  ForeignHistory run() {
    history_.format = "harsh";
    forEachLine(*files_.find("habits"), files_.shown("habits"),
                [this](std::size_t line, std::string_view text) { readHabit(line, text); });
    const std::string* const log = files_.find("log");
    if (log == nullptr) throw qz::Error(files_.shown("log") + ": there is no such file, the log of harsh was expected");
    readLog(*log);
    for (Read& read : habits_) move(read);
    return std::move(history_);
  }

 private:
  struct Read {
    ForeignHabit habit;
    std::map<qz::YYYYMMDD, LogLine> days = {};
  };

  [[noreturn]] void refuse(std::string_view file, std::size_t line, std::string_view text,
                           std::string_view wanted) const {
    throw qz::Error(fmt::format("{}: line {}: {}", files_.shown(file), line, foreign_text::found(text, wanted)));
  }

  void readLog(const std::string& log) {
    forEachLine(log, files_.shown("log"), [&](std::size_t line, std::string_view text) {
      readEntry(line, text);
      const auto read = static_cast<double>(text.data() + text.size() - log.data());
      if (progress_) progress_("reading", read / static_cast<double>(log.size()));
    });
  }

  Read& add(const std::string& name) {
    places_.emplace(name, habits_.size());
    return habits_.emplace_back(Read{ForeignHabit(name)});
  }

  void readHabit(std::size_t line, std::string_view text) {
    text = foreign_text::trimmed(text);
    if (text.empty() || text.front() == '#') return;
    if (text.front() == '!') {
      heading_ = std::string(foreign_text::trimmed(text.substr(1)));
      return;
    }
    const std::size_t colon = text.find(": ");
    const std::string name(foreign_text::trimmed(text.substr(0, colon)));
    if (colon == std::string_view::npos || name.empty()) refuse("habits", line, text, "a name, \": \" and a frequency");
    if (places_.contains(name)) refuse("habits", line, name, "each habit once");
    ForeignHabit& habit = add(name).habit;
    setFrequency(line, foreign_text::trimmed(text.substr(colon + 2)), habit);
    if (!heading_.empty()) habit.addCategory(categoryOf(history_.document, heading_, heading_));
  }

  void setFrequency(std::size_t line, std::string_view text, ForeignHabit& habit) const {
    const std::size_t slash = text.find('/');
    const auto first = foreign_text::wholeNumber(foreign_text::trimmed(text.substr(0, slash)));
    const bool isOnce = slash == std::string_view::npos;
    const auto second = isOnce ? std::optional<std::int64_t>(1)
                               : foreign_text::wholeNumber(foreign_text::trimmed(text.substr(slash + 1)));
    if (!first || !second || *first < 0 || *second < 1 || (!isOnce && *first > *second)) {
      refuse("habits", line, text, "a frequency as 1, 7, 3/7 or 0");
    }
    if (*first == 0) {
      TaskFrequency rarest;
      rarest.dayMode = TaskFrequency::DayMode::numberOfDaysInYear;
      habit.setFrequency(rarest);
      habit.remark("the frequency 0, only recorded, became 1 day a year, the rarest there is here");
    } else {
      isOnce ? habit.setTimesInDays(1, *first) : habit.setTimesInDays(*first, *second);
    }
  }

  void readEntry(std::size_t line, std::string_view text) {
    text = foreign_text::trimmed(text);
    if (text.empty() || text.front() == '#') return;
    const std::vector<std::string_view> fields = fieldsOf(text);
    if (fields.size() < 3) refuse("log", line, text, "date : habit : y, n or s : comment : amount");
    const auto day = foreign_text::day(foreign_text::trimmed(fields[0]));
    if (!day) refuse("log", line, foreign_text::trimmed(fields[0]), "a day of the calendar as 2024-01-31");
    const std::string name(foreign_text::trimmed(fields[1]));
    if (name.empty()) refuse("log", line, text, "the name of a habit");
    const std::string_view result = foreign_text::trimmed(fields[2]);
    const auto type = typeOf(result);
    if (!type) refuse("log", line, result, "y, n or s");
    habitOf(name).days.insert_or_assign(*day, said(*type, fields));
  }

  Read& habitOf(const std::string& name) {
    const auto place = places_.find(name);
    if (place != places_.end()) return habits_[place->second];
    Read& read = add(name);
    read.habit.setArchived();
    read.habit.remark("it is in the log and not among the habits any more; it became an archived one of every day");
    return read;
  }

  void move(Read& read) {
    for (const auto& [day, line] : read.days) {
      read.habit.add(line.type, day, line.amount);
      read.habit.addNote(day, line.comment);
    }
    std::move(read.habit).moveInto(history_, settings_);
  }

  const ForeignFiles& files_;
  const ForeignHistorySettings& settings_;
  const ExchangeProgress& progress_;
  std::string heading_;
  std::vector<Read> habits_;
  std::unordered_map<std::string, std::size_t> places_;  // in habits_, by name
  ForeignHistory history_;
};

}  // namespace

ForeignHistory readHarsh(const ForeignFiles& files, const ForeignHistorySettings& settings,
                         const ExchangeProgress& progress) {
  return HarshReading(files, settings, progress).run();
}

}  // namespace habitra
