#include <HabitraCLI/Terminal.h>

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <cstdlib>

namespace habitra {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

/// The parameter of the "select graphic rendition" sequence (ECMA-48).
std::string_view rendition(Colour colour) {
  switch (colour) {
    case Colour::plain: return "0";
    case Colour::bold: return "1";
    case Colour::dim: return "2";
    case Colour::green: return "32";
    case Colour::yellow: return "33";
    case Colour::red: return "31";
  }
  return "0";
}

}  // namespace

Terminal Terminal::of(int descriptor) {
  Terminal terminal;
  if (::isatty(descriptor) == 0) return terminal;
  terminal.hasColour = environment("NO_COLOR").empty() && environment("TERM") != "dumb";
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) terminal.columns = size.ws_col;
  return terminal;
}

std::string Terminal::paint(Colour colour, std::string_view text) const {
  if (!hasColour || colour == Colour::plain) return std::string(text);
  return fmt::format("\x1b[{}m{}\x1b[0m", rendition(colour), text);
}

}  // namespace habitra
