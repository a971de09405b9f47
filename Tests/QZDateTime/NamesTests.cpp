#include <QZDateTime/DateFormatter.h>
#include <QZDateTime/QZDateTimeCache.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace qz {
namespace {

using Style = DateFormatter::Style;
using Width = DateFormatter::Width;

bool isLoaded(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find(library) != std::string::npos) return true;
  return false;
}

TEST(Names, AreEnglishWithoutALanguage) {
  for (const char* locale : {"", "C", "POSIX", "C.UTF-8"}) {
    const DateFormatter formatter(Style::titleWithYear, locale);
    EXPECT_EQ(formatter.string(YYYYMM(2024, 1)), "January 2024");
    EXPECT_EQ(formatter.string(YYYYMMDD(2024, 1, 31)), "January 31, 2024");
    EXPECT_EQ(formatter.symbol(DayOfWeek::monday, Width::narrow), "M");
    EXPECT_EQ(formatter.firstDayOfWeek(), DayOfWeek::monday);
  }
}

TEST(Names, AreThoseOfTheLanguageFromALibraryOpenedAtTheFirst) {
  const DateFormatter symbols(Style::symbols, "de_DE.UTF-8");
  ASSERT_TRUE(isLoaded("libQZDateTimeNames.so"));
  EXPECT_EQ(symbols.symbol(DayOfWeek::wednesday, Width::full), "Mittwoch");
  EXPECT_EQ(symbols.symbol(DayOfWeek::sunday, Width::abbreviated), "So");
  EXPECT_EQ(symbols.symbol(DayOfWeek::saturday, Width::narrow), "S");
  EXPECT_EQ(symbols.string(YYYYMM(2024, 3)), "März");
  EXPECT_EQ(DateFormatter(Style::titleWithYear, "de_DE@euro").string(YYYYMM(2024, 3)), "März 2024");
  EXPECT_EQ(DateFormatter(Style::shortTitleWithYear, "fr_FR").string(YYYYMMDD(2024, 1, 31)), "31 janv. 2024");
  EXPECT_EQ(DateFormatter(Style::localizedYear, "ja_JP").string(YYYYMM(2024, 1)), "2024年");
  // Gregorian whatever the territory counts by, and long before that calendar was made.
  EXPECT_NE(DateFormatter(Style::localizedYear, "th_TH").string(YYYYMM(2024, 1)).find("2024"), std::string::npos);
  EXPECT_EQ(DateFormatter(Style::titleWithYear, "en_US").string(YYYYMMDD(1000, 2, 28)), "February 28, 1000");
  EXPECT_EQ(DateFormatter(Style::titleWithYear, "en_US").string(YYYYMMDD(5'000'000, 2, 28)), "February 28, 5000000");
  EXPECT_EQ(DateFormatter(Style::symbols, "qq_QQ").string(YYYYMM(2024, 3)), "March");
}

TEST(Names, WeeksBeginAsInTheTerritory) {
  const auto first = [](const char* locale) { return DateFormatter(Style::symbols, locale).firstDayOfWeek(); };
  EXPECT_EQ(first("en_US.UTF-8"), DayOfWeek::sunday);
  EXPECT_EQ(first("en_GB.UTF-8"), DayOfWeek::monday);
  EXPECT_EQ(first("ar_EG.UTF-8"), DayOfWeek::saturday);
}

TEST(Names, LocaleIsTheFirstVariableThatIsSet) {
  setenv("LANG", "it_IT", 1);
  unsetenv("LC_TIME");
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(DateFormatter::userLocale(), "it_IT");
  setenv("LC_TIME", "es_ES", 1);
  EXPECT_EQ(DateFormatter::userLocale(), "es_ES");
  // The shared formatters take it once; every title goes through them.
  EXPECT_EQ(DayOfWeek(DayOfWeek::monday).title(), "lunes");
  EXPECT_EQ(DayOfWeek(DayOfWeek::monday).shortTitle(), "lun");
  EXPECT_EQ(DayOfWeek(DayOfWeek::monday).veryShortTitle(), "L");
  EXPECT_EQ(DayOfWeek::defaultFirst(), DayOfWeek::monday);
  EXPECT_EQ(YYYYMM(2024, 1).title(), "enero");
  EXPECT_EQ(YYYYMM(2024, 1).titleWithYear(), "enero de 2024");
  EXPECT_EQ(YYYYMM(2024, 1).shortTitle(), "ene");
  EXPECT_EQ(YYYYMM(2024, 1).shortTitleWithYear(), "ene 2024");
  EXPECT_EQ(YYYYMM(2024, 1).localizedYear(), "2024");
  EXPECT_EQ(YYYYMMDD(2024, 1, 31).string(), "31 ene 2024");
}

}  // namespace
}  // namespace qz
