// The JSON file of beaverhabits: {"habits": [habit...]}.
//
//   habit    name, records; perhaps star, status ("normal", "archive", "soft_delete"), tags, period
//   record   day ("2024-01-31"), perhaps done (true or false), perhaps text
//   period   period_type ("D", "W", "M", "Y"), period_count of them, target_count of days wanted in those
//
// A record that is not done may be one that was ticked and unticked, or one that only holds a text: it says nothing.
// Of several records of a day the last one tells whether it is done. Habits may share a name.

#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHabit.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>
#include <vector>

namespace habitra {

namespace {

using nlohmann::json;

/// A value of the file, with the way to it for messages: "habits, 2, records, 14, day". Places count from 1.
class Node {
 public:
  Node(const json& value, std::string way) : value_(value), way_(std::move(way)) {}

  /// None when the member is absent or null.
  [[nodiscard]] std::optional<Node> member(const char* name) const {
    if (!value_.is_object()) refuse("an object");
    const auto found = value_.find(name);
    if (found == value_.end() || found->is_null()) return std::nullopt;
    return Node(*found, way_.empty() ? std::string(name) : way_ + ", " + name);
  }
  [[nodiscard]] Node wanted(const char* name) const {
    const auto found = member(name);
    if (!found) throw qz::Error(way_ + (way_.empty() ? "" : ": ") + "no member \"" + name + "\" found");
    return *found;
  }
  [[nodiscard]] std::size_t count() const {
    if (!value_.is_array()) refuse("a list");
    return value_.size();
  }
  [[nodiscard]] Node at(std::size_t index) const { return {value_[index], fmt::format("{}, {}", way_, index + 1)}; }
  [[nodiscard]] std::string text() const {
    if (!value_.is_string() || value_.get_ref<const std::string&>().find('\0') != std::string::npos) refuse("a text");
    return value_.get<std::string>();
  }
  [[nodiscard]] bool flag() const {
    if (!value_.is_boolean()) refuse("true or false");
    return value_.get<bool>();
  }
  [[nodiscard]] std::int64_t count(std::int64_t most) const {
    const bool isCount = value_.is_number_unsigned() && value_.get<std::uint64_t>() >= 1 &&
                         value_.get<std::uint64_t>() <= static_cast<std::uint64_t>(most);
    if (!isCount) refuse(fmt::format("a whole number from 1 to {}", most));
    return value_.get<std::int64_t>();
  }

  [[noreturn]] void refuse(std::string_view wanted) const {
    const std::string shown = value_.is_structured()
                                  ? std::string(value_.type_name())
                                  : qz::utf8::printable(value_.dump(-1, ' ', false, json::error_handler_t::replace));
    throw qz::Error(fmt::format("{}: {} found, {} expected", way_.empty() ? "the whole" : way_, shown, wanted));
  }

 private:
  const json& value_;
  std::string way_;
};

std::int64_t daysOf(const Node& periodType) {
  const std::string type = periodType.text();
  if (type == "D") return 1;
  if (type == "W") return 7;
  if (type == "M") return 30;
  if (type == "Y") return 365;
  periodType.refuse("D, W, M or Y");
}

/// So many months are a year when there are twelve.
std::int64_t daysOfPeriods(std::int64_t days, std::int64_t count) {
  return days == 30 && count == 12 ? 365 : days * count;
}

class BeaverReading {
 public:
  explicit BeaverReading(const ForeignHistorySettings& settings) : settings_(settings) {}

  ForeignHistory run(const json& content) {
    history_.format = "beaverhabits";
    const Node habits = Node(content, {}).wanted("habits");
    for (std::size_t index = 0; index < habits.count(); ++index) read(habits.at(index));
    return std::move(history_);
  }

 private:
  void read(const Node& node) {
    ForeignHabit habit(node.wanted("name").text());
    if (const auto status = node.member("status")) {
      const std::string text = status->text();
      if (text == "soft_delete") {
        history_.remarks.push_back(qz::utf8::printable(habit.title(), 200) + " was deleted there; left out");
        return;
      }
      if (text == "archive" || text == "archived") {
        habit.setArchived();
      } else if (text != "normal" && text != "active") {
        habit.remarkNoPlace("status", text);
      }
    }
    if (const auto star = node.member("star"); star && star->flag()) habit.remark("the star has no place here");
    if (const auto period = node.member("period")) readPeriod(*period, habit);
    if (const auto tags = node.member("tags")) {
      for (std::size_t index = 0; index < tags->count(); ++index) {
        const std::string tag = tags->at(index).text();
        habit.addCategory(categoryOf(history_.document, tag, tag));
      }
    }
    readRecords(node.wanted("records"), habit);
    std::move(habit).moveInto(history_, settings_);
  }

  static void readPeriod(const Node& period, ForeignHabit& habit) {
    constexpr std::int64_t mostPeriods = 10'000;
    const auto count = [&period](const char* name) {
      const auto found = period.member(name);
      return found ? found->count(mostPeriods) : 1;
    };
    const std::int64_t days = daysOfPeriods(daysOf(period.wanted("period_type")), count("period_count"));
    habit.setTimesInDays(count("target_count"), days);
  }

  struct Day {
    bool isDone = false;
    std::vector<std::string> texts;
  };

  /// Adds a record; false where one before it says otherwise.
  static bool addTo(Day& said, bool isFirst, bool isDone, std::string text) {
    const bool agrees = isFirst || said.isDone == isDone;
    said.isDone = isDone;
    if (std::find(said.texts.begin(), said.texts.end(), text) == said.texts.end())
      said.texts.push_back(std::move(text));
    return agrees;
  }

  static void readRecords(const Node& records, ForeignHabit& habit) {
    if (records.count() > foreign_limits::mostRows) records.refuse(fmt::format("at most {}", foreign_limits::mostRows));
    std::map<qz::YYYYMMDD, Day> days;
    std::set<qz::YYYYMMDD> contradicted;
    for (std::size_t index = 0; index < records.count(); ++index) {
      const Node record = records.at(index);
      const Node date = record.wanted("day");
      const auto day = foreign_text::day(date.text());
      if (!day) date.refuse("a day of the calendar as 2024-01-31");
      const auto done = record.member("done");
      const auto text = record.member("text");
      const auto [said, isFirst] = days.try_emplace(*day);
      if (!addTo(said->second, isFirst, done && done->flag(), text ? text->text() : std::string()))
        contradicted.insert(*day);
    }
    habit.remarkContradictions(contradicted, "last");
    std::size_t numUndone = 0;
    for (const auto& [day, said] : days) {
      if (said.isDone) habit.add(TaskLogEntryType::completedManuallyFull, day);
      if (!said.isDone) ++numUndone;
      for (const std::string& text : said.texts) habit.addNote(day, text);
    }
    if (numUndone == 0) return;
    habit.remark(foreign_text::counted(numUndone, "day is", "days are") +
                 " recorded and not done, which does not tell a miss from a day that says nothing; left open");
  }

  const ForeignHistorySettings& settings_;
  ForeignHistory history_;
};

}  // namespace

ForeignHistory readBeaver(const std::string& text, const std::string& name, const ForeignHistorySettings& settings) {
  try {
    return BeaverReading(settings).run(json::parse(text));
  } catch (const json::parse_error& error) {
    throw qz::Error(fmt::format("{}: byte {}: no JSON of beaverhabits ({})", name, error.byte,
                                qz::utf8::printable(error.what(), 200)));
  } catch (const json::exception& error) {  // a number that no type holds
    throw qz::Error(fmt::format("{}: no JSON of beaverhabits ({})", name, qz::utf8::printable(error.what(), 200)));
  } catch (const qz::Error& error) {
    throw qz::Error(name + ": " + error.what());
  }
}

}  // namespace habitra
