#pragma once

#include <cstdint>

namespace habitra {

/// Whether somebody is looking.
enum class ApplicationState : std::uint8_t {
  active,      ///< a person sees the tasks and works with them
  inactive,    ///< they can be seen, but something else is worked with
  background,  ///< nothing is shown; so also in a program without a face
};

}  // namespace habitra
