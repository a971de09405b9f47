#include <QZDateTime/DayNumber.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/ISO8601.h>

#include <array>
#include <cstdint>

namespace qz {
namespace {

constexpr std::int64_t microsecondsPerSecond = 1'000'000;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Takes a text apart from its front. Once something is missing it has failed, and what it gives then is of no use.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool isComplete() const { return !failed_ && rest_.empty(); }
  [[nodiscard]] char peek() const { return rest_.empty() ? '\0' : rest_.front(); }

  void expect(bool holds) { failed_ = failed_ || !holds; }

  char take() {
    if (rest_.empty()) {
      failed_ = true;
      return '\0';
    }
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  /// A number of exactly that many digits, between 0 and `most`.
  std::int64_t number(int digits, std::int64_t most) {
    std::int64_t value = 0;
    for (int i = 0; i < digits; ++i) {
      const char c = take();
      expect(isDigit(c));
      value = value * 10 + (c - '0');
    }
    expect(value <= most);
    return value;
  }

  /// The digits after the point, as microseconds; further ones are dropped.
  std::int64_t fraction() {
    expect(isDigit(peek()));
    std::int64_t value = 0;
    std::int64_t unit = microsecondsPerSecond / 10;
    for (; isDigit(peek()); unit /= 10) value += (take() - '0') * unit;
    return value;
  }

 private:
  std::string_view rest_;
  bool failed_ = false;
};

/// Seconds since 1970 of the date, as though it were UTC.
std::int64_t readDate(Reader& reader) {
  const std::int64_t y = reader.number(4, 9999);
  reader.expect(reader.take() == '-');
  const std::int64_t m = reader.number(2, 12);
  reader.expect(reader.take() == '-');
  const std::int64_t d = reader.number(2, 31);
  if (!day_number::exists(y, m, d)) {
    reader.expect(false);
    return 0;
  }
  return day_number::ofNear(y, m, d) * HHMMSS::secondsPerDay;
}

/// Seconds that clocks are ahead of UTC.
std::int64_t readOffset(Reader& reader) {
  const char sign = reader.take();
  if (sign == 'Z' || sign == 'z') return 0;
  reader.expect(sign == '+' || sign == '-');
  const std::int64_t hours = reader.number(2, 23);
  reader.expect(reader.take() == ':');
  const std::int64_t offset = hours * 3600 + reader.number(2, 59) * 60;
  return sign == '-' ? -offset : offset;
}

/// Writes the decimal digits of a number that has at most that many, with leading zeros.
char* writeDigits(char* to, std::int64_t value, int digits) {
  for (int i = digits - 1; i >= 0; --i, value /= 10) to[i] = static_cast<char>('0' + value % 10);
  return to + digits;
}

char* writeYear(char* to, std::int64_t year) {
  if (year < 0) {
    *to++ = '-';
    year = -year;
  }
  int digits = 4;
  for (std::int64_t bound = 10'000; year >= bound; bound *= 10) ++digits;
  return writeDigits(to, year, digits);
}

using Text = std::array<char, 40>;  // the longest: a six-digit year with sign, six digits of fraction

/// "2024-01-31T08:15:00".
char* writeSeconds(char* to, std::chrono::sys_seconds date) {
  const std::int64_t seconds = date.time_since_epoch().count();
  const std::int64_t time = day_number::floorRemainder(seconds, HHMMSS::secondsPerDay);
  const day_number::Civil civil = day_number::nearCivil(day_number::floorDivide(seconds, HHMMSS::secondsPerDay));
  to = writeYear(to, civil.y);
  *to++ = '-';
  to = writeDigits(to, civil.m, 2);
  *to++ = '-';
  to = writeDigits(to, civil.d, 2);
  *to++ = 'T';
  to = writeDigits(to, time / 3600, 2);
  *to++ = ':';
  to = writeDigits(to, time / 60 % 60, 2);
  *to++ = ':';
  return writeDigits(to, time % 60, 2);
}

}  // namespace

std::optional<Moment> momentFromISO8601(std::string_view text) {
  Reader reader(text);
  std::int64_t seconds = readDate(reader);
  const char separator = reader.take();
  reader.expect(separator == 'T' || separator == 't' || separator == ' ');
  seconds += reader.number(2, 23) * 3600;
  reader.expect(reader.take() == ':');
  seconds += reader.number(2, 59) * 60;
  reader.expect(reader.take() == ':');
  const std::int64_t second = reader.number(2, 60);
  seconds += second;
  std::int64_t fraction = 0;
  if (reader.peek() == '.') {
    reader.take();
    fraction = reader.fraction();
  }
  seconds -= readOffset(reader);
  // A leap second is only ever the last of a UTC day; counted on, it is the first of the next.
  reader.expect(second < 60 || day_number::floorRemainder(seconds, HHMMSS::secondsPerDay) == 0);
  if (!reader.isComplete()) return std::nullopt;
  return Moment(std::chrono::microseconds(seconds * microsecondsPerSecond + fraction));
}

std::string iso8601(Moment date) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(date);
  std::int64_t fraction = (date.time_since_epoch() % std::chrono::seconds(1)).count();
  if (fraction < 0) fraction += microsecondsPerSecond;
  Text text;
  char* end = writeSeconds(text.data(), whole);
  if (fraction != 0) {
    *end++ = '.';
    end = writeDigits(end, fraction, 6);
    while (end[-1] == '0') --end;
  }
  *end++ = 'Z';
  return std::string(text.data(), end);
}

std::string iso8601WholeSeconds(Moment date) {
  Text text;
  char* end = writeSeconds(text.data(), std::chrono::floor<std::chrono::seconds>(date));
  *end++ = 'Z';
  return std::string(text.data(), end);
}

}  // namespace qz
