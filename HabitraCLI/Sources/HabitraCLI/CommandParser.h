#pragma once

#include <HabitraCLI/Command.h>
#include <HabitraCLI/GlobalOptions.h>

#include <span>
#include <string>
#include <vector>

namespace habitra {

/// A command line, understood.
struct ParsedLine {
  GlobalOptions global;
  const Command* command = nullptr;  ///< none when no verb was given
  Arguments arguments;
};

/// Reads `words`, the program's own name left out. Global options may stand before or after the verb; the last of a
/// repeated option counts; after "--" everything is a word. Throws UsageError, with the nearest names where there are
/// any. With --help or --version it is no error that words are missing.
[[nodiscard]] ParsedLine parseCommandLine(std::vector<std::string> words, std::span<const Command* const> commands);

}  // namespace habitra
