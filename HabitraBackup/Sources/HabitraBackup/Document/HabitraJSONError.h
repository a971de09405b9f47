#pragma once

#include <QZKit/Error.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace habitra {

/// What is wrong with a backup document, as one line: "tasks[3].taskEntry[17].entryDate: 20230230 is not a day of the
/// calendar", or, where the text is no JSON, "line 12, column 5: ...".
class HabitraJSONError : public qz::Error {
 public:
  /// `path` leads to the value that is meant, and is empty for the document as a whole; `problem` says what was found
  /// and what was expected.
  HabitraJSONError(std::string_view path, std::string_view problem);
  /// `line` and `column` count from 1, the column in bytes.
  HabitraJSONError(std::size_t line, std::size_t column, std::string_view problem);

  /// The same about the file of that name: "mine.habitra: tasks[3]...".
  [[nodiscard]] HabitraJSONError in(std::string_view file) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::size_t line() const { return line_; }      ///< 0 where a path says it
  [[nodiscard]] std::size_t column() const { return column_; }  ///< the same

 private:
  struct Whole {};
  HabitraJSONError(Whole, const std::string& message, const HabitraJSONError& of);

  std::string path_;
  std::size_t line_ = 0;
  std::size_t column_ = 0;
};

}  // namespace habitra
