#pragma once

#include <ostream>
#include <streambuf>
#include <string_view>
#include <vector>

namespace habitra {

/// Standard output, buffered, with an eye on whether what was written got there. A full disk or a reader that has gone
/// is an error at the latest when flush() is called; nothing is written by the destructor.
/// Belongs to one thread.
class StandardOutput {
 public:
  explicit StandardOutput(int descriptor);

  /// Throws qz::Error when it cannot be written.
  void write(std::string_view text);
  void flush();

  /// For whoever writes to a stream. It goes bad when something cannot be written.
  [[nodiscard]] std::ostream& stream() { return stream_; }

  /// Whether a write failed because the reader closed its end: no reason to complain.
  [[nodiscard]] bool readerIsGone() const;

 private:
  class Buffer final : public std::streambuf {
   public:
    explicit Buffer(int descriptor);
    [[nodiscard]] int error() const { return error_; }

   protected:
    int_type overflow(int_type character) override;
    int sync() override;

   private:
    bool writeOut();

    int descriptor_;
    int error_ = 0;  ///< errno of the first write that failed; nothing is written after it
    std::vector<char> bytes_;
  };

  void check() const;

  Buffer buffer_;
  std::ostream stream_;
};

}  // namespace habitra
