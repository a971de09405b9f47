#pragma once

#include <QZKit/Error.h>

#include <string>
#include <string_view>

namespace habitra {

/// Compressed bytes that are damaged or cut.
class CompressionError : public qz::Error {
 public:
  explicit CompressionError(const std::string& message) : qz::Error(message) {}

  /// The same about the file of that name.
  [[nodiscard]] CompressionError in(std::string_view file) const {
    return CompressionError(std::string(file) + ": " + what());
  }
};

}  // namespace habitra
