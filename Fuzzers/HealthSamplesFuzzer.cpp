// Any bytes are health samples, each of them fit to be a record, or a refusal with one line.

#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <QZKit/Error.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> bytes(data, size);
  const habitra::ByteSource source = [&bytes](std::span<char> chunk) {
    const std::size_t length = std::min(chunk.size(), bytes.size());
    std::copy_n(bytes.begin(), length, chunk.begin());
    bytes = bytes.subspan(length);
    return length;
  };
  std::set<qz::UniqueID> identifiers;
  try {
    habitra::HealthSampleCSVDecoder().decode(source, [&identifiers](const qz::QZHKSample& sample) {
      qz::require(!problem(sample), "what is read can be a record");
      qz::require(identifiers.insert(sample.identifier).second, "each row has an identifier of its own");
    });
  } catch (const qz::Error& error) {
    const std::string_view message = error.what();
    qz::require(!message.empty() && message.find('\n') == std::string_view::npos, "a refusal is one line");
  }
  return 0;
}
