#pragma once

#include <QZKit/Error.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace habitra {

/// What is wrong with a CSV text, as one line: "line 12, entry_date: "20230230" is not a day of the calendar".
class CSVError : public qz::Error {
 public:
  /// `line` is the physical line on which the row starts, from 1; `column` the name in the header, empty when the row
  /// as a whole is meant; `problem` says what was found and what was expected.
  CSVError(std::size_t line, std::string_view column, std::string_view problem);

  /// The same about the file of that name: "walk.csv: line 12, entry_date: ...".
  [[nodiscard]] CSVError in(std::string_view file) const;

  [[nodiscard]] std::size_t line() const { return line_; }
  [[nodiscard]] const std::string& column() const { return column_; }

 private:
  CSVError(const std::string& message, std::size_t line, std::string_view column);

  std::size_t line_;
  std::string column_;
};

}  // namespace habitra
