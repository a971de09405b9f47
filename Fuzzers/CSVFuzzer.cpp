// Any bytes are a history or a refusal with one line; a history that was read is written and read again without a change.

#include <HabitraBackup/HabitraBackup.h>
#include <QZKit/Error.h>
#include <QZKit/Trap.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(reinterpret_cast<const std::byte*>(data), size);
  try {
    const auto document = habitra::HabitraBackup::loadCsv(bytes, qz::Moment{});
    const auto written = document.csvData();
    const auto again = habitra::HabitraBackup::loadCsv(written, qz::Moment{});
    qz::require(again.csvData() == written, "what was read is written the same again");
  } catch (const qz::Error& error) {
    const std::string_view message = error.what();
    qz::require(!message.empty() && message.find('\n') == std::string_view::npos, "a refusal is one line");
  }
  return 0;
}
