#include <HabitraBackup/Document/HabitraJSONError.h>

#include <fmt/core.h>

namespace habitra {

HabitraJSONError::HabitraJSONError(std::string_view path, std::string_view problem)
    : qz::Error(path.empty() ? std::string(problem) : fmt::format("{}: {}", path, problem)), path_(path) {}

HabitraJSONError::HabitraJSONError(std::size_t line, std::size_t column, std::string_view problem)
    : qz::Error(fmt::format("line {}, column {}: {}", line, column, problem)), line_(line), column_(column) {}

HabitraJSONError::HabitraJSONError(Whole, const std::string& message, const HabitraJSONError& of)
    : qz::Error(message), path_(of.path_), line_(of.line_), column_(of.column_) {}

HabitraJSONError HabitraJSONError::in(std::string_view file) const {
  return HabitraJSONError(Whole{}, fmt::format("{}: {}", file, what()), *this);
}

}  // namespace habitra
