#include <csv.h>
#include <HabitraBackup/CSVWriter.h>
#include <HabitraBackup/UTF8.h>

namespace habitra {

namespace {

constexpr std::size_t enoughToHandOn = std::size_t{1} << 16U;

bool isWritable(std::string_view text) {
  return text.find('\0') == std::string_view::npos && !utf8::firstInvalidByte(text);
}

void appendQuoted(std::string& buffer, std::string_view text) {
  const std::size_t begin = buffer.size();
  buffer.resize(begin + csv_write(nullptr, 0, text.data(), text.size()));
  csv_write(buffer.data() + begin, buffer.size() - begin, text.data(), text.size());
}

}  // namespace

void CSVWriter::field(std::string_view text) {
  if (!isWritable(text)) {
    field(utf8::repaired(text));
    return;
  }
  if (isRowBegun_) buffer_ += ',';
  isRowBegun_ = true;
  if (text.find_first_of(",\"\r\n") != std::string_view::npos) {
    appendQuoted(buffer_, text);
  } else {
    buffer_ += text;
  }
}

void CSVWriter::endRow() {
  buffer_ += '\n';
  isRowBegun_ = false;
  if (buffer_.size() >= enoughToHandOn) flush();
}

void CSVWriter::flush() {
  if (!buffer_.empty()) sink_(buffer_);
  buffer_.clear();
}

}  // namespace habitra
