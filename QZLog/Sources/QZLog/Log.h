#pragma once

#include <fmt/core.h>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

/// The log: one line per message, for whoever looks into what the program did.
///
/// Until configure() is called nothing is logged. A short-lived command keeps it quiet: nothing is opened or formatted
/// before the first message that is to be kept. All functions may be called from any thread.
namespace qz::log {

enum class Level {
  debug,    ///< what a step found or skipped
  info,     ///< a pass started, a query finished
  warning,  ///< background work that could not do its part and went on
  error,    ///< an action failed
};

struct Configuration {
  /// Where kept messages go: rotated at 1 MiB, three files in all, created 0600. None: no file.
  std::optional<std::filesystem::path> file;
  /// The least level that is kept in the file.
  Level fileLevel = Level::warning;
  /// Every message also goes to standard error.
  bool verbose = false;
};

/// Sets where messages go. Opens nothing. A file that turns out not to be writable is given up without an error: the
/// log must never stop what it reports on.
void configure(Configuration configuration);

/// Whether a message of this level goes anywhere.
[[nodiscard]] bool isKept(Level level) noexcept;

/// Logs `message` as it stands.
void write(Level level, std::string_view message) noexcept;

template <typename... Args>
void debug(fmt::format_string<Args...> format, Args&&... args) {
  if (isKept(Level::debug)) write(Level::debug, fmt::format(format, std::forward<Args>(args)...));
}

template <typename... Args>
void info(fmt::format_string<Args...> format, Args&&... args) {
  if (isKept(Level::info)) write(Level::info, fmt::format(format, std::forward<Args>(args)...));
}

template <typename... Args>
void warning(fmt::format_string<Args...> format, Args&&... args) {
  if (isKept(Level::warning)) write(Level::warning, fmt::format(format, std::forward<Args>(args)...));
}

template <typename... Args>
void error(fmt::format_string<Args...> format, Args&&... args) {
  if (isKept(Level::error)) write(Level::error, fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace qz::log
