#pragma once

#include <HabitraModel/Store/Engine/Connection.h>

#include <memory>
#include <string>

namespace habitra {

/// Copies what `source` sees into the memory called `address` and gives a connection to it, which keeps it alive.
[[nodiscard]] std::unique_ptr<Connection> copyIntoMemory(Connection& source, const std::string& address);

}  // namespace habitra
