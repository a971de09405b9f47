#include <HabitraApp/SettingSummary.h>
#include <HabitraApp/SettingText.h>
#include <HabitraCore/TaskFrequencyValidation.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>
#include <vector>

namespace habitra {
namespace {

using Mode = TaskFrequency::DayMode;
using qz::utf8::quoted;

/// Sunday first, as weekdays are numbered.
constexpr std::array<std::string_view, 7> weekdays{"sunday",   "monday", "tuesday", "wednesday",
                                                   "thursday", "friday", "saturday"};

struct PeriodModes {
  std::string_view period;
  Mode days;   ///< so many different days of each
  Mode times;  ///< so many times in each
};
constexpr std::array<PeriodModes, 4> periodModes{{
    {"week", Mode::numberOfDaysInWeek, Mode::aggregateOverWeek},
    {"fortnight", Mode::numberOfDaysInFortnight, Mode::aggregateOverFortnight},
    {"month", Mode::numberOfDaysInMonth, Mode::aggregateOverMonth},
    {"year", Mode::numberOfDaysInYear, Mode::aggregateOverYear},
}};

constexpr std::string_view frequencyForms =
    "'every day', 'monday, thursday', 'every 3 days', '3 days a week', '10 times a month' or 'days 1, 15, last', each "
    "with 'x2' behind it for twice on each occasion";

/// Words and numbers in lower case; blanks and commas part them.
std::vector<std::string> wordsOf(std::string_view text) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == ' ' || c == ',' || c == '\t') {
      if (!words.back().empty()) words.emplace_back();
    } else {
      words.back() += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

std::optional<std::int64_t> number(std::string_view word) {
  std::int64_t value = 0;
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || stop != end || value < 0) return std::nullopt;
  return value;
}

std::optional<qz::DayOfWeek> weekday(std::string_view word) {
  constexpr std::size_t shortest = 3;
  if (word.size() < shortest) return std::nullopt;
  const auto found = std::ranges::find_if(weekdays, [&](std::string_view name) { return name.starts_with(word); });
  return found == weekdays.end() ? std::nullopt : qz::DayOfWeek::fromRawValue(found - weekdays.begin());
}

std::optional<DaysOfMonth> dayOfMonth(std::string_view word) {
  constexpr std::string_view last = "last";
  constexpr std::int64_t mostFromEnd = 7;
  if (word == last) return DaysOfMonth::lastDay();
  if (word.starts_with("last-")) {
    const auto offset = number(word.substr(last.size() + 1));
    return offset && *offset <= mostFromEnd ? std::optional(DaysOfMonth::lastDay(*offset)) : std::nullopt;
  }
  const auto day = number(word);
  return day && *day >= 1 && *day <= 31 ? std::optional(DaysOfMonth::day(*day)) : std::nullopt;
}

/// What `read` makes of all words but "and" together; none when it knows one of them not, or there is none.
template <typename Set, typename Read>
std::optional<Set> unitedWords(std::span<const std::string> words, Read&& read) {
  Set set;
  for (const std::string& word : words) {
    if (word == "and") continue;
    const auto member = read(word);
    if (!member) return std::nullopt;
    set.insert(*member);
  }
  return set.isEmpty() ? std::nullopt : std::optional(set);
}

TaskFrequency onWeekdays(qz::DaysOfWeek days) {
  TaskFrequency frequency;
  frequency.days = days;
  return frequency;
}

std::optional<TaskFrequency> dayRule(std::span<const std::string> words) {
  using Day = qz::DayOfWeek;
  const auto is = [&](std::initializer_list<std::string_view> wanted) { return std::ranges::equal(words, wanted); };
  if (is({"every", "day"}) || is({"daily"})) return TaskFrequency::everyDay();
  if (is({"weekdays"})) return onWeekdays({Day::monday, Day::tuesday, Day::wednesday, Day::thursday, Day::friday});
  if (is({"weekends"})) return onWeekdays({Day::saturday, Day::sunday});
  if (words.size() > 1 && (words[0] == "day" || words[0] == "days")) {
    TaskFrequency frequency{.dayMode = Mode::specificDaysOfMonth};
    const auto days = unitedWords<DaysOfMonth>(words.subspan(1), dayOfMonth);
    if (!days) return std::nullopt;
    frequency.daysOfMonth = *days;
    return frequency;
  }
  const auto days = unitedWords<qz::DaysOfWeek>(words, weekday);
  return days ? std::optional(onWeekdays(*days)) : std::nullopt;
}

std::optional<TaskFrequency> countingRule(std::span<const std::string> words) {
  TaskFrequency frequency;
  if (words.size() == 3 && words[0] == "every") {
    const bool isOther = words[1] == "other" && words[2] == "day";
    const auto interval = isOther ? 2 : number(words[1]);
    if (!interval || (!isOther && words[2] != "days")) return std::nullopt;
    frequency.dayMode = Mode::dayInterval;
    frequency.dayInterval = *interval;
    return frequency;
  }
  if (words.size() != 4 || (words[2] != "a" && words[2] != "per")) return std::nullopt;
  const auto count = number(words[0]);
  const auto modes = std::ranges::find(periodModes, std::string_view(words[3]), &PeriodModes::period);
  const bool countsDays = words[1] == "day" || words[1] == "days";
  if (!count || modes == periodModes.end() || !(countsDays || words[1] == "time" || words[1] == "times"))
    return std::nullopt;
  frequency.dayMode = countsDays ? modes->days : modes->times;
  frequency.numCompletions = *count;
  return frequency;
}

template <typename Members, typename Spell>
std::string list(const Members& members, Spell&& spell) {
  std::string text;
  for (const auto& member : members) text += (text.empty() ? "" : ", ") + spell(member);
  return text;
}

std::string dayOfMonthText(DaysOfMonth day) {
  for (std::int64_t n = 1; n <= 31; ++n)
    if (day == DaysOfMonth::day(n)) return std::to_string(n);
  for (std::int64_t offset = 1; offset < 8; ++offset)
    if (day == DaysOfMonth::lastDay(offset)) return "last-" + std::to_string(offset);
  return "last";
}

std::string ruleText(const TaskFrequency& frequency) {
  switch (frequency.dayMode) {
    case Mode::specificDaysOfWeek:
      return frequency.days == qz::DayOfWeek::every() ? "every day" : list(frequency.days, weekdayText);
    case Mode::specificDaysOfMonth: return "days " + list(frequency.daysOfMonth, dayOfMonthText);
    case Mode::dayInterval: return fmt::format("every {} days", frequency.dayInterval);
    default: break;
  }
  const bool countsDays = frequency.isCountedDays();
  const auto modes =
      std::ranges::find(periodModes, frequency.dayMode, countsDays ? &PeriodModes::days : &PeriodModes::times);
  const std::int64_t count = frequency.numCompletions;
  return fmt::format("{} {}{} a {}", count, countsDays ? "day" : "time", count == 1 ? "" : "s", modes->period);
}

}  // namespace

std::string weekdayText(qz::DayOfWeek day) { return std::string(weekdays[static_cast<std::size_t>(day.rawValue())]); }

qz::DayOfWeek weekdayFromText(std::string_view text) {
  const auto words = wordsOf(text);
  const auto day = words.size() == 1 ? weekday(words[0]) : std::nullopt;
  if (!day) throw SettingError(fmt::format("{} is no weekday; enter one such as 'monday'", quoted(text)));
  return *day;
}

std::string timeOfDayText(qz::HHMMSS time) {
  return time.s() == 0 ? fmt::format("{:02}:{:02}", time.h(), time.m()) : time.debugDescription();
}

qz::HHMMSS timeOfDayFromText(std::string_view text) {
  const auto words = wordsOf(text);
  if (words.size() == 1) {
    if (words[0] == "midnight") return qz::HHMMSS::midnight;
    if (words[0] == "noon") return qz::HHMMSS::midday;
    std::array<std::int64_t, 3> parts{};
    std::size_t count = 0;
    std::string_view rest = words[0];
    bool isGood = true;
    for (bool more = true; more && isGood;) {
      const std::size_t colon = rest.find(':');
      more = colon != std::string_view::npos;
      const auto part = number(rest.substr(0, colon));
      isGood = part && count < parts.size();
      if (isGood) parts[count++] = *part;
      if (more) rest.remove_prefix(colon + 1);
    }
    if (isGood && count >= 2 && qz::HHMMSS::isTimeOfDay(parts[0], parts[1], parts[2]))
      return {parts[0], parts[1], parts[2]};
  }
  throw SettingError(fmt::format("{} is no time of day; enter one from 00:00 to 23:59, such as '04:00'", quoted(text)));
}

std::string frequencyText(const TaskFrequency& frequency) {
  const std::int64_t times = frequency.numPartialCompletions;
  return ruleText(frequency) + (times > 1 ? fmt::format(" x{}", times) : "");
}

TaskFrequency frequencyFromText(std::string_view text) {
  const auto words = wordsOf(text);
  std::span<const std::string> rule(words);
  std::optional<std::int64_t> times = 1;
  if (!rule.empty() && rule.back().starts_with('x')) {
    times = number(std::string_view(rule.back()).substr(1));
    rule = rule.first(rule.size() - 1);
  }
  std::optional<TaskFrequency> frequency = dayRule(rule);
  if (!frequency) frequency = countingRule(rule);
  if (!frequency || !times)
    throw SettingError(fmt::format("{} is no frequency; enter one such as {}", quoted(text), frequencyForms));
  frequency->numPartialCompletions = *times;
  if (const auto found = problems(*frequency); !found.empty())
    throw SettingError(fmt::format("{} cannot be a frequency: {} is not from {} to {}", quoted(text),
                                   found.front().found, found.front().least, found.front().most));
  return *frequency;
}

}  // namespace habitra
