#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/Names/EnglishNames.h>
#include <QZDateTime/YYYYMMDD.h>

#include <array>
#include <string_view>

namespace qz {
namespace {

constexpr std::array<std::string_view, 7> weekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> months = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};

std::string cut(std::string_view name, NameSource::Width width) {
  switch (width) {
    case NameSource::Width::full: return std::string(name);
    case NameSource::Width::abbreviated: return std::string(name.substr(0, 3));
    case NameSource::Width::narrow: return std::string(name.substr(0, 1));
  }
  return std::string(name);
}

}  // namespace

std::string EnglishNames::weekday(int day, Width width) const {
  return cut(weekdays.at(static_cast<std::size_t>(day - 1)), width);
}

std::string EnglishNames::month(int month, Width width) const {
  return cut(months.at(static_cast<std::size_t>(month - 1)), width);
}

std::string EnglishNames::date(Pattern pattern, std::int64_t number) const {
  const YYYYMMDD day = YYYYMMDD::fromDayNumber(number);
  const std::string year = std::to_string(day.y());
  const auto monthName = [&](Width width) { return month(static_cast<int>(day.m()), width); };
  const std::string dayAndYear = " " + std::to_string(day.d()) + ", " + year;
  switch (pattern) {
    case Pattern::monthWithYear: return monthName(Width::full) + " " + year;
    case Pattern::shortMonthWithYear: return monthName(Width::abbreviated) + " " + year;
    case Pattern::date: return monthName(Width::full) + dayAndYear;
    case Pattern::shortDate: return monthName(Width::abbreviated) + dayAndYear;
    case Pattern::year: return year;
  }
  return year;
}

int EnglishNames::firstWeekday() const { return static_cast<int>(CalendarDayOfWeek(DayOfWeek::monday).rawValue()); }

}  // namespace qz
