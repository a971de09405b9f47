#include <HabitraBackup/CSV/CSVError.h>

#include <fmt/core.h>

namespace habitra {

CSVError::CSVError(std::size_t line, std::string_view column, std::string_view problem)
    : CSVError(column.empty() ? fmt::format("line {}: {}", line, problem)
                              : fmt::format("line {}, {}: {}", line, column, problem),
               line, column) {}

CSVError::CSVError(const std::string& message, std::size_t line, std::string_view column)
    : qz::Error(message), line_(line), column_(column) {}

CSVError CSVError::in(std::string_view file) const {
  return CSVError(fmt::format("{}: {}", file, what()), line_, column_);
}

}  // namespace habitra
