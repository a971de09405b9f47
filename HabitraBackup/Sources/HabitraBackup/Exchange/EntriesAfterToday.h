#pragma once

#include <cstdint>

namespace habitra {

/// What becomes of entries of a document that are dated after the task's today, and were not made in time elsewhere.
enum class EntriesAfterToday : std::uint8_t {
  leftOut,  ///< the next pass would delete them
  taken     ///< the clock may be behind: what is put back is to be what was there
};

}  // namespace habitra
