#pragma once

#include <QZHealthKit/QZHKSample.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <unordered_map>

namespace habitra {

/// Derives an identifier for each row of a text from what the row says and from the number of equal rows before it. It
/// is of version 8, and its leading 48 bits are the start in milliseconds since 1970, so that rows in order of time lie
/// in that order in an index; the rest is a hash (XXH3). Lives for one text, on one thread.
class RowIdentifiers {
 public:
  /// The identifier of the next row, which says this; the identifier that it bears does not matter.
  [[nodiscard]] qz::UniqueID next(const qz::QZHKSample& sample);

 private:
  std::unordered_map<qz::UniqueID, std::uint32_t> counts_;  // of equal rows, by the identifier of the first
};

}  // namespace habitra
