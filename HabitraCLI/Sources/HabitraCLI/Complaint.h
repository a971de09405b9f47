#pragma once

#include <string_view>

namespace habitra {

/// Says on standard error what went wrong, in one line: "habitra: <message>". May be called from any thread.
void complain(std::string_view message);

}  // namespace habitra
