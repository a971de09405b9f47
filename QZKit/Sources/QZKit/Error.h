#pragma once

#include <stdexcept>
#include <string>

namespace qz {

/// The base of every failure that a person's action can meet: a file that cannot be read, a name that nobody bears,
/// a disk that is full. `what()` is one short English sentence without a full stop, fit to stand after "habitra: ".
/// Each module derives its own types where a caller needs to tell failures apart.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace qz
