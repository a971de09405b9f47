// Any bytes are a history or a refusal with one line; what was read and written once is from then on read and written
// without a change. (The first time an identifier that is none is dropped, and its task moves to those without.)

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
    const auto first = habitra::HabitraBackup::loadCsv(bytes, qz::Moment{}).csvData();
    const auto second = habitra::HabitraBackup::loadCsv(first, qz::Moment{}).csvData();
    const auto third = habitra::HabitraBackup::loadCsv(second, qz::Moment{}).csvData();
    qz::require(third == second, "what was read is written the same again");
  } catch (const qz::Error& error) {
    const std::string_view message = error.what();
    qz::require(!message.empty() && message.find('\n') == std::string_view::npos, "a refusal is one line");
  }
  return 0;
}
