#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONWriter.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/Trap.h>
#include <QZKit/UTF8.h>

#include <absl/strings/escaping.h>
#include <fmt/format.h>
#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace habitra {

namespace {

constexpr std::size_t enoughToHandOn = std::size_t{1} << 16U;
constexpr std::size_t indentation = 2;

template <typename T>
std::string shortestDigits(T value) {
  std::array<char, 32> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  qz::require(error == std::errc{}, "a number fits its buffer");
  return {digits.data(), end};
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20; }
bool needsEscape(char c) { return c == '"' || c == '\\' || isControl(c); }

void appendEscaped(std::string& to, char c) {
  switch (c) {
    case '\n': to += "\\n"; return;
    case '\r': to += "\\r"; return;
    case '\t': to += "\\t"; return;
    default: break;
  }
  if (isControl(c)) {
    fmt::format_to(std::back_inserter(to), "\\u{:04x}", static_cast<unsigned>(c));
  } else {
    to += '\\';
    to += c;
  }
}

bool isText(std::string_view text) {
  return text.find('\0') == std::string_view::npos && !qz::utf8::firstInvalidByte(text);
}

}  // namespace

void JSONWriter::key(std::string_view name) {
  value(name);
  buffer_ += ':';
  isAfterKey_ = true;
}

void JSONWriter::value(bool value) { append(value ? "true" : "false"); }
void JSONWriter::value(std::int64_t value) { append(shortestDigits(value)); }
// A zero has no sign: read as a whole number it would lose it.
void JSONWriter::value(double value) { append(value == 0 ? "0" : shortestDigits(value)); }
void JSONWriter::value(qz::Moment moment) { value(std::string_view(qz::iso8601(moment))); }

void JSONWriter::value(const Bytes& bytes) {
  std::string text;
  absl::Base64Escape(absl::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), &text);
  value(std::string_view(text));
}

void JSONWriter::value(std::string_view text) {
  if (!isText(text)) {
    value(std::string_view(qz::utf8::repaired(text)));
    return;
  }
  separate();
  buffer_ += '"';
  const std::size_t begin = buffer_.size();
  while (!text.empty()) {
    const auto plain = static_cast<std::size_t>(std::ranges::find_if(text, needsEscape) - text.begin());
    buffer_ += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    appendEscaped(buffer_, text.front());
    text.remove_prefix(1);
  }
  if (buffer_.size() - begin > document_values::longestText)
    throw HabitraJSONError("", fmt::format("{} is longer than 16 MiB and would not be read back",
                                           qz::utf8::quoted(std::string_view(buffer_).substr(begin))));
  buffer_ += '"';
}

void JSONWriter::append(std::string_view text) {
  separate();
  buffer_ += text;
}

void JSONWriter::separate() {
  if (isAfterKey_) {
    isAfterKey_ = false;
    return;
  }
  if (open_.empty()) return;
  if (!open_.back().isEmpty) buffer_ += ',';
  open_.back().isEmpty = false;
  if (open_.back().spread == Spread::lines) newLine();
}

void JSONWriter::newLine() {
  buffer_ += '\n';
  if (buffer_.size() >= enoughToHandOn) {
    sink_(buffer_);
    buffer_.clear();
  }
  buffer_.append(indentation * open_.size(), ' ');
}

void JSONWriter::begin(char bracket, Spread spread) {
  separate();
  buffer_ += bracket;
  open_.push_back({spread, true});
}

void JSONWriter::end(char bracket) {
  const Open ended = open_.back();
  open_.pop_back();
  if (ended.spread == Spread::lines && !ended.isEmpty) newLine();
  buffer_ += bracket;
}

void JSONWriter::finish() {
  qz::require(open_.empty(), "what was begun is ended");
  buffer_ += '\n';
  sink_(buffer_);
  buffer_.clear();
}

}  // namespace habitra
