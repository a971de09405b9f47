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
    {"--home", "DIR", "where the habits are kept (else $HABITRA_HOME, else ~/.local/share/habitra)"},
    {"--now", "ISO8601", "answer and record as if it were this moment, or the midday of this day"},
    {"--time-zone", "ZONE", "whose days they are, as in Europe/Berlin (else this device's)"},
    {"--json", "", "answer in JSON"},
    {"--verbose", "", "say on standard error what is being done"},
    {"--version", "", "the version of the program"},
    {"--help", "", "this help; after a verb, the help of the verb"},
}};

}  // namespace habitra
