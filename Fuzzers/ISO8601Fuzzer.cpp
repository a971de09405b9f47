// Any text is a moment or none; a moment that was read is written and read again as the same.

#include <QZDateTime/ISO8601.h>
#include <QZKit/Trap.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (const auto moment = qz::momentFromISO8601(text))
    qz::require(qz::momentFromISO8601(qz::iso8601(*moment)) == moment, "a moment survives its text form");
  return 0;
}
