#pragma once

#include <HabitraCLI/Command.h>

#include <array>
#include <optional>
#include <string>

namespace habitra {

/// The options that every verb takes, as they were written.
struct GlobalOptions {
  std::optional<std::string> home;
  std::optional<std::string> now;
  std::optional<std::string> timeZone;
  bool json = false;
  bool verbose = false;
  bool version = false;
  bool help = false;
};

inline constexpr std::array<Option, 7> globalOptions{{
    {"--home", "DIR", "the folder they are kept in (~/.local/share/habitra)"},
    {"--now", "ISO8601", "act as if it were this moment, or midday of this day"},
    {"--time-zone", "ZONE", "days are those of this zone, as Europe/Berlin"},
    {"--json", "", "answer in JSON"},
    {"--verbose", "", "say on standard error what is being done"},
    {"--version", "", "the version of the program"},
    {"--help", "", "this help; after a verb, the help of the verb"},
}};

}  // namespace habitra
