#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONBytes.h>

#include <string_view>

namespace habitra {

namespace {

constexpr std::size_t chunkLength = std::size_t{1} << 16U;

// What ends a number or a word.
bool isBetweenTokens(char c) { return std::string_view("{}[]:, \t\r\n").find(c) != std::string_view::npos; }

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

JSONBytes::JSONBytes(const ByteSource& source) : source_(source), chunk_(chunkLength) { fill(); }

void JSONBytes::fill() {
  next_ = 0;
  end_ = source_(chunk_);
  if (end_ > 0) examine();
}

void JSONBytes::advance() {
  const bool wasBlank = !isInText_ && isBlank(current());
  pass();
  // The parser remembers all it is given of what lies between two tokens: of blanks the first is enough.
  while (wasBlank && !isAtEnd() && isBlank(current())) pass();
}

void JSONBytes::pass() {
  line_ += isLineOver_ ? 1 : 0;
  column_ = isLineOver_ ? 1 : column_ + 1;
  isLineOver_ = current() == '\n';
  if (++next_ == end_) {
    fill();
  } else {
    examine();
  }
}

void JSONBytes::examine() {
  const char c = current();
  if (c == '\0') refuseNext("byte 0x00 is not text (UTF-8 expected)");
  if (c == '"' && !isEscaped_) {
    isInText_ = !isInText_;
    tokenLength_ = 0;
    return;
  }
  if (!isInText_ && isBetweenTokens(c)) {
    tokenLength_ = 0;
    return;
  }
  isEscaped_ = isInText_ && c == '\\' && !isEscaped_;
  if (++tokenLength_ > document_values::longestText) refuseNext("a text or number is longer than 16 MiB");
}

void JSONBytes::refuseNext(std::string_view problem) const {
  throw HabitraJSONError(line_ + (isLineOver_ ? 1 : 0), isLineOver_ ? 1 : column_ + 1, problem);
}

}  // namespace habitra
