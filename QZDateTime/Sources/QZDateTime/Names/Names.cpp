// The names module: the only place that knows ICU. Built as a library of its own.

#include <QZDateTime/Names/NameSource.h>

#include <unicode/calendar.h>
#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <array>
#include <memory>
#include <mutex>

namespace qz {
namespace {

std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

/// What the pattern asks for, in the letters of Unicode's date skeletons.
const char* skeletonOf(NameSource::Pattern pattern) {
  switch (pattern) {
    case NameSource::Pattern::monthWithYear: return "yMMMM";
    case NameSource::Pattern::shortMonthWithYear: return "yMMM";
    case NameSource::Pattern::date: return "yMMMMd";
    case NameSource::Pattern::shortDate: return "yMMMd";
    case NameSource::Pattern::year: return "y";
  }
  return "y";
}

icu::DateFormatSymbols::DtWidthType widthOf(NameSource::Width width) {
  switch (width) {
    case NameSource::Width::full: return icu::DateFormatSymbols::WIDE;
    case NameSource::Width::abbreviated: return icu::DateFormatSymbols::ABBREVIATED;
    case NameSource::Width::narrow: return icu::DateFormatSymbols::NARROW;
  }
  return icu::DateFormatSymbols::WIDE;
}

/// The locale of a name such as "de_AT.UTF-8", with the Gregorian calendar; English where ICU knows no such language.
icu::Locale localeOf(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::createCanonical(name);
  const icu::DateFormatSymbols symbols(locale, status);
  const bool isUnknown =
      U_FAILURE(status) || locale.isBogus() || *symbols.getLocale(ULOC_ACTUAL_LOCALE, status).getLanguage() == '\0';
  if (isUnknown) locale = icu::Locale("en", locale.getCountry());
  status = U_ZERO_ERROR;
  locale.setKeywordValue("calendar", "gregorian", status);
  return locale;
}

class LocalizedNames final : public NameSource {
 public:
  LocalizedNames(const icu::Locale& locale, UErrorCode& status) : locale_(locale), symbols_(locale, status) {}

  [[nodiscard]] std::string weekday(int day, Width width) const override {
    int32_t count = 0;
    // The list has an unused first place, for weekdays are counted from 1.
    const icu::UnicodeString* names = symbols_.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, widthOf(width));
    return day < count ? utf8(names[day]) : std::string();
  }

  [[nodiscard]] std::string month(int month, Width width) const override {
    int32_t count = 0;
    const icu::UnicodeString* names = symbols_.getMonths(count, icu::DateFormatSymbols::STANDALONE, widthOf(width));
    return month <= count ? utf8(names[month - 1]) : std::string();
  }

  [[nodiscard]] std::string date(Pattern pattern, std::int64_t number) const override {
    constexpr double millisecondsPerDay = 86'400'000;
    const std::scoped_lock lock(mutex_);
    icu::UnicodeString text;
    return utf8(format(pattern).format(static_cast<double>(number) * millisecondsPerDay, text));
  }

  [[nodiscard]] int firstWeekday() const override {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(locale_, status));
    const UCalendarDaysOfWeek first = U_SUCCESS(status) ? calendar->getFirstDayOfWeek(status) : UCAL_MONDAY;
    return U_SUCCESS(status) ? first : UCAL_MONDAY;
  }

 private:
  /// REQUIRES: the lock is held.
  icu::DateFormat& format(Pattern pattern) const {
    std::unique_ptr<icu::DateFormat>& format = formats_.at(static_cast<std::size_t>(pattern));
    if (!format) format = makeFormat(pattern);
    return *format;
  }

  std::unique_ptr<icu::DateFormat> makeFormat(Pattern pattern) const {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createInstanceForSkeleton(skeletonOf(pattern), locale_, status));
    if (U_FAILURE(status)) {
      status = U_ZERO_ERROR;
      format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString("y-MM-dd"), locale_, status);
    }
    auto calendar = std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), locale_, status);
    // No Julian dates, however early: the change of calendars lies before every date.
    calendar->setGregorianChange(-1e18, status);
    format->adoptCalendar(calendar.release());
    return format;
  }

  icu::Locale locale_;
  icu::DateFormatSymbols symbols_;
  mutable std::mutex mutex_;  // guards the formats, which keep state while they write
  mutable std::array<std::unique_ptr<icu::DateFormat>, 5> formats_;  // by pattern, made when first needed
};

}  // namespace
}  // namespace qz

extern "C" [[gnu::visibility("default")]] qz::NameSource* qzMakeNameSource(const char* locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto names = std::make_unique<qz::LocalizedNames>(qz::localeOf(locale), status);
  return U_SUCCESS(status) ? names.release() : nullptr;
}
