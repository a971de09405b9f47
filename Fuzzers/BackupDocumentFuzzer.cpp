// Any bytes are a backup document or a refusal with one line; what was read is written so that it is read the same, and
// written the same again.

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
    const auto first = habitra::HabitraBackup::loadJson(bytes).document;
    const auto text = first.jsonString();
    const auto second = habitra::HabitraBackup::loadJson(std::as_bytes(std::span(text)));
    qz::require(second.document == first, "what is written is read the same");
    qz::require(second.remarks == habitra::HabitraJSONRemarks{}, "what is written is known");
    qz::require(second.document.jsonString() == text, "what was read is written the same again");
  } catch (const qz::Error& error) {
    const std::string_view message = error.what();
    qz::require(!message.empty() && message.find('\n') == std::string_view::npos, "a refusal is one line");
  }
  return 0;
}
