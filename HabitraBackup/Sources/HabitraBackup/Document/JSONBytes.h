#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

namespace habitra {

/// The bytes of a JSON text one after the other, refused where no parser should see them: a NUL, which ours takes for
/// the end, and a text or number longer than document_values::longestText, which it would gather in memory.
class JSONBytes {
 public:
  explicit JSONBytes(const ByteSource& source);

  [[nodiscard]] bool isAtEnd() const { return next_ == end_; }
  [[nodiscard]] char current() const { return chunk_[next_]; }
  void advance();

  /// Where the byte stands that was passed last, from 1.
  [[nodiscard]] std::size_t line() const { return line_; }
  [[nodiscard]] std::size_t column() const { return column_; }

 private:
  void pass();
  void fill();
  /// Looks at the byte that comes next.
  void examine();
  [[noreturn]] void refuseNext(std::string_view problem) const;

  const ByteSource& source_;
  std::vector<char> chunk_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  std::size_t line_ = 1;
  std::size_t column_ = 0;
  bool isLineOver_ = false;
  std::size_t tokenLength_ = 0;
  bool isInText_ = false;
  bool isEscaped_ = false;
};

/// Walks over JSONBytes; one that was made without them is the end.
class JSONByteIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  JSONByteIterator() = default;
  explicit JSONByteIterator(JSONBytes& bytes) : bytes_(&bytes) {}

  char operator*() const { return bytes_->current(); }
  JSONByteIterator& operator++() {
    bytes_->advance();
    return *this;
  }
  void operator++(int) { ++*this; }

  friend bool operator==(const JSONByteIterator& a, const JSONByteIterator& b) { return a.isAtEnd() == b.isAtEnd(); }

 private:
  [[nodiscard]] bool isAtEnd() const { return bytes_ == nullptr || bytes_->isAtEnd(); }

  JSONBytes* bytes_ = nullptr;
};

}  // namespace habitra
