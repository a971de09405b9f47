#pragma once

#include <QZKit/Error.h>

namespace qz {

/// A coded value (JSON) that cannot be what it stands for: a day below 1, a time of day past 23:59:59. `what()` is the
/// decoder's exact short message, "Unable to create YYYYMM" for instance.
class DecodingError : public Error {
 public:
  using Error::Error;
};

}  // namespace qz
