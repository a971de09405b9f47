#pragma once

#include <QZKit/Error.h>

#include <cstdint>
#include <string>

namespace qz {

/// Why a health store did not do what it was asked.
class QZHealthStoreError : public Error {
 public:
  enum class Reason : std::uint8_t {
    invalidQuery,   ///< the figures that were asked for do not exist for the type
    invalidSample,  ///< a sample that was to be saved cannot be a record
    storage,        ///< what holds the samples could not be read or written
  };

  QZHealthStoreError(Reason reason, const std::string& message) : Error(message), reason_(reason) {}

  [[nodiscard]] Reason reason() const { return reason_; }

 private:
  Reason reason_;
};

}  // namespace qz
