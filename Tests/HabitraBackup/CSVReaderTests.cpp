#include <gtest/gtest.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/CSVReader.h>
#include <HabitraBackup/CSV/CSVWriter.h>
#include <rapidcheck.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace habitra {
namespace {

using Row = std::vector<std::string>;

struct Collected final : CSVReader::Handler {
  void header(std::size_t line, std::span<const std::string_view> names) override { row(line, names); }
  void row(std::size_t line, std::span<const std::string_view> fields) override {
    lines.push_back(line);
    rows.emplace_back(fields.begin(), fields.end());
  }
  std::vector<Row> rows;
  std::vector<std::size_t> lines;
};

Collected read(std::string_view text, std::size_t pieceLength = 1000) {
  Collected collected;
  CSVReader reader(collected);
  for (std::size_t at = 0; at < text.size(); at += pieceLength) reader.feed(text.substr(at, pieceLength));
  reader.finish();
  return collected;
}

std::string refusal(std::string_view text) {
  try {
    read(text);
  } catch (const CSVError& error) {
    return error.what();
  }
  return "accepted";
}

// The grammar once more, over a whole text and without any library: the rows, or none for what is to be refused.
class PlainParser {
 public:
  explicit PlainParser(std::string_view text) : text_(text) {
    if (text_.starts_with("\xEF\xBB\xBF")) text_.remove_prefix(3);
  }

  std::optional<std::vector<Row>> rows() {
    std::vector<Row> rows;
    bool isEmptyLineBefore = false;
    while (at_ < text_.size()) {
      const auto row = line();
      if (!row) return std::nullopt;
      if (row->empty()) {
        isEmptyLineBefore = true;
      } else if (isEmptyLineBefore || (!rows.empty() && row->size() != rows.front().size())) {
        return std::nullopt;
      } else {
        rows.push_back(*row);
      }
    }
    return rows.empty() ? std::nullopt : std::optional(rows);
  }

 private:
  bool isEnd() const { return at_ == text_.size(); }

  // An empty row for an empty line.
  std::optional<Row> line() {
    if (lineEnd()) return Row();
    Row row;
    while (true) {
      const auto found = isEnd() || text_[at_] != '"' ? plainField() : quotedField();
      if (!found) return std::nullopt;
      row.push_back(*found);
      if (isEnd() || lineEnd()) return row;
      if (text_[at_++] != ',') return std::nullopt;
    }
  }

  bool lineEnd() {
    for (const std::string_view end : {"\n", "\r\n"}) {
      if (!text_.substr(at_).starts_with(end)) continue;
      at_ += end.size();
      return true;
    }
    return false;
  }

  std::optional<std::string> plainField() {
    const std::size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
    std::string field(text_.substr(at_, end - at_));
    at_ = end;
    if (field.find('"') != std::string::npos) return std::nullopt;
    return field;
  }

  std::optional<std::string> quotedField() {
    std::string field;
    for (++at_; !isEnd(); ++at_) {
      if (text_[at_] == '"' && text_.substr(at_ + 1).starts_with('"')) {
        field += '"';
        ++at_;
      } else if (text_[at_] == '"') {
        ++at_;
        return field;
      } else {
        field += text_[at_];
      }
    }
    return std::nullopt;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

TEST(CSVReaderTests, ReadsWhatItsGrammarSays) {
  const std::vector<std::pair<std::string, std::vector<Row>>> cases{
      {"a,b", {{"a", "b"}}},
      {"\xEF\xBB\xBF"
       "a,b\r\n1,2\r\n",
       {{"a", "b"}, {"1", "2"}}},
      {"a,b\n ' x ,\t\n", {{"a", "b"}, {" ' x ", "\t"}}},
      {"a,b\n\"1,\"\"2\"\"\r\n3\",\"\"\n", {{"a", "b"}, {"1,\"2\"\r\n3", ""}}},
      {"a,b\n,\n\n\r\n\n", {{"a", "b"}, {"", ""}}},
      {"a\n\"\"\n", {{"a"}, {""}}},
  };
  for (const auto& [text, rows] : cases) {
    EXPECT_EQ(read(text).rows, rows) << text;
    EXPECT_EQ(read(text, 1).rows, rows) << "byte by byte: " << text;
  }
}

TEST(CSVReaderTests, CountsPhysicalLines) {
  const auto collected = read("a,b\r\n\"1\n\n\r\n\",2\r\n3,4\n");
  EXPECT_EQ(collected.lines, (std::vector<std::size_t>{1, 2, 6}));
}

TEST(CSVReaderTests, RefusalsSayWhereAndWhat) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", "line 1: the file is empty, a header line was expected"},
      {"\xEF\xBB\xBF", "line 1: the file is empty, a header line was expected"},
      {"\n\n", "line 1: the file is empty, a header line was expected"},
      {"a,b\n1,2\n3\n", "line 3: 1 fields, but the header has 2"},
      {"a,b\n\"1\n2\",2\n3,4,5\n", "line 4: 3 fields, but the header has 2"},
      {"a,b\n1,2\n\n3,4\n", "line 3: the line is empty, which only the end of a file may be"},
      {"a,b\n1,2\r3,4\n", "line 2: a carriage return without a line feed after it"},
      {"a,b\n1,2\r", "line 2: a carriage return without a line feed after it"},
      {"a,b\n1,x\"y\n", "line 2, b: a quote inside a field that does not begin with one"},
      {"a,b\n1,2\n\"1\" ,2\n", "line 3, a: \" \" after the quote that closes the field"},
      {"a,b\n1,2\n3,\"4\n5,6\n", "line 3, b: the quote that opens the field is never closed"},
      {std::string("a,b\n1,2\n3,4\0\n", 13), "line 3, b: byte 0x00 is not text (UTF-8 expected)"},
      {"a,b\n\xC3(,2\n", "line 2, a: byte 0xC3 is not text (UTF-8 expected)"},
      {"\x7F"
       "ELF\xFF,b\n",
       "line 1, column 1: byte 0xFF is not text (UTF-8 expected)"},
  };
  for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text), message) << text;
}

TEST(CSVReaderTests, AnEndlessFieldIsNoticedBeforeItFillsTheMemory) {
  Collected collected;
  CSVReader reader(collected);
  const std::string piece(std::size_t{1} << 20U, 'x');
  reader.feed("a,b\n1,\"");
  EXPECT_THROW(
      {
        for (int i = 0; i < 32; ++i) reader.feed(piece);
      },
      CSVError);
}

TEST(CSVReaderTests, WhatAHandlerThrowsArrives) {
  struct Thrower final : CSVReader::Handler {
    void header(std::size_t, std::span<const std::string_view>) override { throw std::out_of_range("mine"); }
    void row(std::size_t, std::span<const std::string_view>) override { ADD_FAILURE() << "went on after the throw"; }
  } thrower;
  CSVReader reader(thrower);
  EXPECT_THROW(reader.feed("a\n1\n2\n"), std::out_of_range);
}

TEST(CSVReaderTests, AgreesWithAPlainParserOnAnyText) {
  const bool agrees = rc::check("reader and plain parser", [] {
    const auto parts = *rc::gen::container<std::vector<std::string>>(
        rc::gen::element<std::string>("a", ",", "\"", "\"", "\n", "\r\n", "\r", "é", " ", ",\n", "\"\"", "a,b\n"));
    std::string text = *rc::gen::element<std::string>("", "\xEF\xBB\xBF", "h,i\n");
    for (const std::string& part : parts) text += part;
    const auto expected = PlainParser(text).rows();
    std::optional<std::vector<Row>> found;
    try {
      found = read(text, *rc::gen::inRange<std::size_t>(1, 9)).rows;
    } catch (const CSVError&) {
    }
    RC_ASSERT(found == expected);
  });
  EXPECT_TRUE(agrees);
}

TEST(CSVReaderTests, WrittenTextReadsBack) {
  const bool agrees = rc::check("writer, then reader", [] {
    const auto field = rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
                                        "a", ",", "\"", "\n", "\r", "\t", " ", "é", "🏃", "\xEF\xBB\xBF")),
                                    [](const std::vector<std::string>& parts) {
                                      std::string text;
                                      for (const std::string& part : parts) text += part;
                                      return text;
                                    });
    const auto width = *rc::gen::inRange<std::size_t>(2, 5);
    auto rows = *rc::gen::container<std::vector<Row>>(rc::gen::container<Row>(width, field));
    rows.insert(rows.begin(), Row(width, "name"));
    std::string text;
    CSVWriter writer([&text](std::string_view bytes) { text += bytes; });
    for (const Row& row : rows) {
      for (const std::string& value : row) writer.field(value);
      writer.endRow();
    }
    writer.flush();
    RC_ASSERT(read(text, *rc::gen::inRange<std::size_t>(1, 50)).rows == rows);
  });
  EXPECT_TRUE(agrees);
}

TEST(CSVWriterTests, QuotesOnlyWhereNeededAndMendsWhatIsNoText) {
  std::string text;
  CSVWriter writer([&text](std::string_view bytes) { text += bytes; });
  for (const std::string& value :
       {std::string(" a "), std::string(), std::string("b,c"), std::string("d\"e"), std::string("f\ng"),
        std::string("h\ri"), std::string("j\0k", 3), std::string("\xC3,\xED\xA0\x80")}) {
    writer.field(value);
  }
  writer.endRow();
  writer.flush();
  EXPECT_EQ(text, " a ,,\"b,c\",\"d\"\"e\",\"f\ng\",\"h\ri\",j\uFFFDk,\"\uFFFD,\uFFFD\uFFFD\uFFFD\"\n");
}

}  // namespace
}  // namespace habitra
