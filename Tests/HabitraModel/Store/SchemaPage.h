#pragma once

#include <string>

namespace habitra {

/// docs/Schema.md as the descriptions of the entities have it.
[[nodiscard]] std::string schemaPage();

}  // namespace habitra
