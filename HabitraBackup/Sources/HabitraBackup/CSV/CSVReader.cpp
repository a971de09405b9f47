#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/CSVReader.h>
#include <HabitraBackup/Files/ByteOrderMark.h>
#include <QZKit/UTF8.h>

#include <csv.h>
#include <fmt/core.h>
#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

namespace {

// Long texts are handed to the parser in slices, so that an error is noticed soon after it was made.
constexpr std::size_t sliceLength = std::size_t{1} << 16U;

constexpr std::size_t smallestBuffer = 4096;

// What is asked of a source at once.
constexpr std::size_t chunkLength = std::size_t{1} << 18U;

int noBlankIsTrimmed(unsigned char /*character*/) { return 0; }

std::string notText(char byte) {
  return fmt::format("byte 0x{:02X} is not text (UTF-8 expected)", static_cast<unsigned char>(byte));
}

}  // namespace

// Drives libcsv in its strict mode. Its callbacks are called by C code, which no exception may cross: what goes wrong
// in one is kept, the rest of the slice ignored, and the exception thrown when the parser has returned.
class CSVReader::Parser {
 public:
  explicit Parser(Handler& handler) : handler_(handler) {
    // Every CR and LF between fields is reported, or "\r\n" could not be told from a lone CR and an empty line.
    if (csv_init(&csv_, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) throw std::bad_alloc();
    csv_set_space_func(&csv_, noBlankIsTrimmed);
  }
  ~Parser() { csv_free(&csv_); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  void feed(std::string_view piece) {
    if (!isPastMark_) {
      start_ += piece;
      if (start_.size() < byteOrderMark.size() && byteOrderMark.starts_with(start_)) return;
      passMark();
      return;
    }
    while (!piece.empty()) {
      parse(piece.substr(0, sliceLength));
      piece.remove_prefix(std::min(piece.size(), sliceLength));
    }
  }

  void finish() {
    if (!isPastMark_) passMark();
    const bool isQuoteOpen = csv_fini(&csv_, onField, onRowEnd, this) != 0;
    rethrow();
    if (isQuoteOpen) refuse("the quote that opens the field is never closed");
    if (isAfterCR_) refuseLoneCR();
    if (columns_.empty()) throw CSVError(1, {}, "the file is empty, a header line was expected");
  }

 private:
  static void onField(void* text, std::size_t length, void* self) {
    static_cast<Parser*>(self)->guarded([&](Parser& parser) {
      parser.field({length == 0 ? "" : static_cast<const char*>(text), length});
    });
  }
  static void onRowEnd(int character, void* self) {
    static_cast<Parser*>(self)->guarded([&](Parser& parser) { parser.rowEnd(character); });
  }

  template <typename Step>
  void guarded(Step step) noexcept {
    if (failure_) return;
    try {
      step(*this);
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

  void passMark() {
    isPastMark_ = true;
    std::string_view start = start_;
    if (start.starts_with(byteOrderMark)) start.remove_prefix(byteOrderMark.size());
    feed(start);
    start_.clear();
  }

  void parse(std::string_view slice) {
    const std::size_t nul = slice.find('\0');
    const std::string_view text = slice.substr(0, nul);
    unfinished_ += text.size();
    // The parser's buffer grows by a fixed step; a step as large as the buffer keeps a long field from costing its
    // square.
    csv_set_blk_size(&csv_, std::max(smallestBuffer, csv_get_buffer_size(&csv_)));
    const std::size_t parsed = csv_parse(&csv_, text.data(), text.size(), onField, onRowEnd, this);
    rethrow();
    if (parsed < text.size()) refuseQuoting(text[parsed]);
    if (nul != std::string_view::npos) refuse(notText('\0'));
    if (unfinished_ > longestField + sliceLength) refuse("the field is longer than 16 MiB (is a quote never closed?)");
  }

  void field(std::string_view text) {
    if (isAfterCR_) refuseLoneCR();
    if (firstEmptyLine_) throw CSVError(*firstEmptyLine_, {}, "the line is empty, which only the end of a file may be");
    unfinished_ = 0;
    if (const auto bad = qz::utf8::firstInvalidByte(text)) refuse(notText(text[*bad]));
    for (const char c : text) lineFeedsInRow_ += c == '\n' ? 1U : 0U;
    text_ += text;
    ends_.push_back(text_.size());
  }

  void rowEnd(int character) {
    unfinished_ = 0;
    if (character == CSV_LF && isAfterCR_) {
      isAfterCR_ = false;
      ++line_;
      return;
    }
    if (isAfterCR_) refuseLoneCR();
    if (ends_.empty()) {
      if (!firstEmptyLine_) firstEmptyLine_ = line_;
    } else {
      deliver();
    }
    line_ += lineFeedsInRow_ + (character == CSV_LF ? 1U : 0U);
    lineFeedsInRow_ = 0;
    isAfterCR_ = character == CSV_CR;
    text_.clear();
    ends_.clear();
  }

  void deliver() {
    fields_.clear();
    std::size_t begin = 0;
    for (const std::size_t end : ends_) {
      fields_.push_back(std::string_view(text_).substr(begin, end - begin));
      begin = end;
    }
    if (columns_.empty()) {
      columns_.assign(fields_.begin(), fields_.end());
      handler_.header(line_, fields_);
      return;
    }
    if (fields_.size() != columns_.size()) {
      throw CSVError(line_, {}, fmt::format("{} fields, but the header has {}", fields_.size(), columns_.size()));
    }
    handler_.row(line_, fields_);
  }

  // The column that is being read, as a message names it.
  [[nodiscard]] std::string column() const {
    const std::size_t index = ends_.size();
    if (index < columns_.size() && !columns_[index].empty()) return qz::utf8::printable(columns_[index]);
    return fmt::format("column {}", index + 1);
  }

  [[noreturn]] void refuse(std::string_view problem) const { throw CSVError(line_, column(), problem); }

  [[noreturn]] void refuseQuoting(char found) const {
    if (csv_error(&csv_) != CSV_EPARSE) throw std::bad_alloc();
    refuse(found == '"' ? "a quote inside a field that does not begin with one"
                        : qz::utf8::quoted({&found, 1}) + " after the quote that closes the field");
  }

  [[noreturn]] void refuseLoneCR() const {
    throw CSVError(line_, {}, "a carriage return without a line feed after it");
  }

  Handler& handler_;
  mutable csv_parser csv_{};
  std::exception_ptr failure_;

  std::string start_;  // the first bytes, until it is known whether they are a byte-order mark
  bool isPastMark_ = false;

  std::vector<std::string> columns_;
  std::string text_;               // the fields of the row, one after the other
  std::vector<std::size_t> ends_;  // where each of them ends in text_
  std::vector<std::string_view> fields_;

  std::size_t line_ = 1;  // where the row that is being read starts
  std::size_t lineFeedsInRow_ = 0;
  std::size_t unfinished_ = 0;  // bytes since the last field ended, to within a slice
  bool isAfterCR_ = false;
  std::optional<std::size_t> firstEmptyLine_;
};

CSVReader::CSVReader(Handler& handler) : parser_(std::make_unique<Parser>(handler)) {}
CSVReader::~CSVReader() = default;
void CSVReader::feed(std::string_view piece) { parser_->feed(piece); }
void CSVReader::finish() { parser_->finish(); }

void readCSV(const ByteSource& source, CSVReader::Handler& handler) {
  CSVReader reader(handler);
  std::vector<char> chunk(chunkLength);
  while (const std::size_t length = source(chunk)) reader.feed({chunk.data(), length});
  reader.finish();
}

}  // namespace habitra
