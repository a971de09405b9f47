#pragma once

#include <HabitraCLI/Command.h>

#include <span>
#include <string>

namespace habitra {

/// What the program is, its verbs in the order of `commands`, and the global options.
[[nodiscard]] std::string generalHelp(std::span<const Command* const> commands);

/// Usage, words, options and examples of one verb.
[[nodiscard]] std::string commandHelp(const Command& command);

}  // namespace habitra
