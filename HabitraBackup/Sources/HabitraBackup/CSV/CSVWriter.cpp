#include <HabitraBackup/CSV/CSVWriter.h>
#include <QZKit/UTF8.h>

#include <csv.h>
#include <array>
#include <cstdint>

namespace habitra {

namespace {

constexpr std::size_t enoughToHandOn = std::size_t{1} << 16U;

// What a byte asks of the field that it stands in.
enum class Care : std::uint8_t { none, quotes, check };

constexpr auto careOfByte = [] {
  std::array<Care, 256> table{};
  for (const char byte : {',', '"', '\r', '\n'}) table[static_cast<unsigned char>(byte)] = Care::quotes;
  table[0] = Care::check;
  for (std::size_t byte = 0x80; byte < table.size(); ++byte) table[byte] = Care::check;
  return table;
}();

struct Needs {
  bool quotes = false;
  bool check = false;
};

Needs needsOf(std::string_view text) {
  Needs needs;
  for (const char byte : text) {
    const Care care = careOfByte[static_cast<unsigned char>(byte)];
    needs.quotes |= care == Care::quotes;
    needs.check |= care == Care::check;
  }
  return needs;
}

bool isWritable(std::string_view text) {
  return text.find('\0') == std::string_view::npos && !qz::utf8::firstInvalidByte(text);
}

void appendQuoted(std::string& buffer, std::string_view text) {
  const std::size_t begin = buffer.size();
  buffer.resize(begin + csv_write(nullptr, 0, text.data(), text.size()));
  csv_write(buffer.data() + begin, buffer.size() - begin, text.data(), text.size());
}

}  // namespace

void CSVWriter::field(std::string_view text) {
  const Needs needs = needsOf(text);
  if (needs.check && !isWritable(text)) {
    field(qz::utf8::repaired(text));
    return;
  }
  if (isRowBegun_) buffer_ += ',';
  isRowBegun_ = true;
  if (needs.quotes) {
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
