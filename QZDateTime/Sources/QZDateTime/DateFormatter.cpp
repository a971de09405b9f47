#include <QZDateTime/DateFormatter.h>
#include <QZDateTime/DayNumber.h>
#include <QZDateTime/Names/EnglishNames.h>
#include <QZDateTime/Names/NamesModule.h>

#include <cstdlib>

namespace qz {
namespace {

NameSource::Width widthOf(DateFormatter::Width width) {
  switch (width) {
    case DateFormatter::Width::full: return NameSource::Width::full;
    case DateFormatter::Width::abbreviated: return NameSource::Width::abbreviated;
    case DateFormatter::Width::narrow: return NameSource::Width::narrow;
  }
  return NameSource::Width::full;
}

/// Calendars of libraries end some millions of years off; days beyond are written in English.
std::string dateText(const NameSource& names, NameSource::Pattern pattern, const YYYYMMDD& day) {
  const std::int64_t number = day.dayNumber();
  return day_number::isNearNumber(number) ? names.date(pattern, number) : EnglishNames().date(pattern, number);
}

}  // namespace

std::string DateFormatter::userLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

DateFormatter::DateFormatter(Style style, const std::string& locale) : style_(style), names_(nameSource(locale)) {}

DateFormatter::~DateFormatter() = default;

std::string DateFormatter::string(const YYYYMM& month) const {
  switch (style_) {
    case Style::titleWithYear: return dateText(*names_, NameSource::Pattern::monthWithYear, month.firstDay());
    case Style::shortTitleWithYear: return dateText(*names_, NameSource::Pattern::shortMonthWithYear, month.firstDay());
    case Style::localizedYear: return dateText(*names_, NameSource::Pattern::year, month.firstDay());
    case Style::symbols: return symbol(month, Width::full);
  }
  return month.debugDescription();
}

std::string DateFormatter::string(const YYYYMMDD& day) const {
  switch (style_) {
    case Style::titleWithYear: return dateText(*names_, NameSource::Pattern::date, day);
    case Style::shortTitleWithYear: return dateText(*names_, NameSource::Pattern::shortDate, day);
    case Style::localizedYear:
    case Style::symbols: return string(day.yyyymm());
  }
  return day.debugDescription();
}

std::string DateFormatter::symbol(DayOfWeek day, Width width) const {
  return names_->weekday(static_cast<int>(CalendarDayOfWeek(day).rawValue()), widthOf(width));
}

std::string DateFormatter::symbol(const YYYYMM& month, Width width) const {
  return names_->month(static_cast<int>(month.firstDay().m()), widthOf(width));
}

DayOfWeek DateFormatter::firstDayOfWeek() const {
  const auto first = CalendarDayOfWeek::fromRawValue(names_->firstWeekday());
  return first.value_or(CalendarDayOfWeek::monday).day();
}

}  // namespace qz
