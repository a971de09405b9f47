#pragma once

#include <QZKit/Error.h>

#include <string>
#include <string_view>

namespace habitra {

/// Words on the command line that cannot be understood. The program ends with exit code 2.
class UsageError : public qz::Error {
 public:
  /// `verb` is the one whose help would help; empty for the general help.
  explicit UsageError(const std::string& message, std::string_view verb = {}) : Error(message), verb_(verb) {}

  [[nodiscard]] const std::string& verb() const { return verb_; }

 private:
  std::string verb_;
};

}  // namespace habitra
