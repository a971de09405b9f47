#include <HabitraCore/AutomaticTaskType/DisplayTitle.h>
#include <HabitraCore/AutomaticTaskType/TitleBuilder.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace habitra {

namespace {

// From here on a double has no decimals to speak of, and digits enough to bore.
constexpr double tooGreatForDigits = 1e15;
constexpr std::size_t digitsPerGroup = 3;
constexpr std::int64_t secondsPerMinute = 60;
constexpr std::int64_t minutesPerHour = 60;
constexpr std::int64_t minutesPerDay = 24 * minutesPerHour;

/// The digits of a magnitude, in the form of the C locale: "1234.5", "1e+18".
std::string digits(double magnitude, std::int64_t decimals) {
  std::array<char, 32> buffer{};
  char* const end = buffer.data() + buffer.size();
  if (magnitude >= tooGreatForDigits) {
    return {buffer.data(), std::to_chars(buffer.data(), end, magnitude, std::chars_format::scientific).ptr};
  }
  // Scaled first, so that 0.15 is a half to be rounded up, as it is read, and not the little less that is stored.
  const double scale = std::pow(10.0, static_cast<double>(decimals));
  const double rounded = std::round(magnitude * scale) / scale;
  const int precision = static_cast<int>(decimals);
  std::string text(buffer.data(), std::to_chars(buffer.data(), end, rounded, std::chars_format::fixed, precision).ptr);
  if (decimals > 0) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

/// A number of which `plain` is the magnitude, in the signs of a language.
std::string formattedNumber(const NumberTexts& texts, bool isNegative, std::string_view plain) {
  const std::size_t wholeDigits = std::min(plain.find_first_not_of("0123456789"), plain.size());
  std::string text(isNegative && plain != "0" ? texts.minus : "");
  for (std::size_t i = 0; i < wholeDigits; ++i) {
    if (i > 0 && (wholeDigits - i) % digitsPerGroup == 0) text += texts.groupSeparator;
    text += plain[i];
  }
  if (wholeDigits == plain.size()) return text;
  if (plain[wholeDigits] != '.') return text.append(plain.substr(wholeDigits));
  return text.append(texts.decimalPoint).append(plain.substr(wholeDigits + 1));
}

std::string twoDigits(std::int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }

std::string formattedTimeOfDay(const NumberTexts& texts, double secondsSinceMidnight) {
  // Whole days first, while a double still knows the minutes; a second time, since 23:59:40 is read as midnight.
  const double secondsPerDay = static_cast<double>(minutesPerDay * secondsPerMinute);
  const double ofDay = std::fmod(std::fmod(secondsSinceMidnight, secondsPerDay) + secondsPerDay, secondsPerDay);
  const std::int64_t minutes = std::llround(ofDay / static_cast<double>(secondsPerMinute)) % minutesPerDay;
  const std::int64_t hour = minutes / minutesPerHour;
  const TitlePlace places[] = {{"hour24", twoDigits(hour)},
                               {"hour12", std::to_string(hour % 12 == 0 ? 12 : hour % 12)},
                               {"minute", twoDigits(minutes % minutesPerHour)},
                               {"half", std::string(texts.halves[hour < 12 ? 0 : 1])}};
  return filled(texts.timeOfDay, places);
}

}  // namespace

std::string formattedQuantityNumber(const TitleTexts& texts, double quantity, TypeUnit unit) {
  qz::require(std::isfinite(quantity), "an amount to be shown is finite");
  if (unit == TypeUnit::timeOfDay) return formattedTimeOfDay(texts.numbers, quantity);
  return formattedNumber(texts.numbers, quantity < 0, digits(std::abs(quantity), unit.decimals()));
}

std::string formattedQuantity(const TitleTexts& texts, double quantity, TypeUnit unit, const CountTexts& amountTexts) {
  const TitlePlace places[] = {{"number", formattedQuantityNumber(texts, quantity, unit)}};
  return filled(places[0].value == "1" ? amountTexts.one : amountTexts.other, places);
}

std::string formattedQuantity(const TitleTexts& texts, double quantity, TypeUnit unit) {
  return formattedQuantity(texts, quantity, unit, texts.units[static_cast<std::size_t>(TypeUnit::Case(unit))].amount);
}

std::string formattedCount(const TitleTexts& texts, std::int64_t count) {
  const std::string plain = std::to_string(count);
  return formattedNumber(texts.numbers, count < 0, std::string_view(plain).substr(count < 0 ? 1 : 0));
}

std::string formattedQuantityNumber(double quantity, TypeUnit unit) {
  return formattedQuantityNumber(englishTitles, quantity, unit);
}

std::string formattedQuantity(double quantity, TypeUnit unit) {
  return formattedQuantity(englishTitles, quantity, unit);
}

const std::string& HealthType::DisplayTitleType::text() const {
  const TaskDisplayTitle* const integrated = title();
  return integrated != nullptr ? integrated->titleFormatted : std::get<std::string>(value_);
}

HealthType::DisplayTitleType HealthType::displayTitleForQuantity(std::optional<double> quantity,
                                                                 std::optional<TypeUnit> unit, TypeSpeeds speeds,
                                                                 const DisplayTitleOptions& options) const {
  return displayTitle(healthTypeRow(*this).title, *this, quantity, unit, speeds, options);
}

}  // namespace habitra
