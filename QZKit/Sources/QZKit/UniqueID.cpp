#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>

#include <pthread.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstring>
#include <random>
#include <stdexcept>

namespace qz {
namespace {

/// Milliseconds since 1970 in the upper bits and a count in the lower twelve: one more at least than the last time.
std::uint64_t nextTick(Moment now) {
  static std::atomic<std::uint64_t> last{0};
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(now.time_since_epoch()).count();
  const auto wanted = static_cast<std::uint64_t>(std::max<std::int64_t>(milliseconds, 0)) << 12;
  auto before = last.load(std::memory_order_relaxed);
  std::uint64_t tick = 0;
  do {
    tick = std::max(wanted, before + 1);
  } while (!last.compare_exchange_weak(before, tick, std::memory_order_relaxed));
  return tick;
}

/// How many forks lie between this process and the one that the program began in.
std::atomic<unsigned>& forks() {
  static std::atomic<unsigned> count{0};
  static const int registered = ::pthread_atfork(nullptr, nullptr, [] { ++count; });
  require(registered == 0, "forks are noticed");
  return count;
}

/// An engine per thread, seeded once by the system: an import draws a million times, a command once. A copy of the
/// process seeds anew, since it would draw what the other one draws.
std::uint64_t randomBits() {
  thread_local std::mt19937_64 engine;
  thread_local std::optional<unsigned> seededAfter;
  if (const unsigned now = forks().load(std::memory_order_relaxed); seededAfter != now) {
    std::array<std::uint32_t, 8> entropy{};
    require(::getentropy(entropy.data(), sizeof entropy) == 0, "the system gives random bits");
    std::seed_seq seed(entropy.begin(), entropy.end());
    engine.seed(seed);
    seededAfter = now;
  }
  return engine();
}

/// The places of the hyphens in the text form. The library's parser takes other forms, too (braces, no hyphens).
bool hasTheTextForm(std::string_view text) {
  return text.size() == UniqueID::textLength && text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
}

UniqueID::Bytes bytesOf(const boost::uuids::uuid& uuid) {
  UniqueID::Bytes bytes{};
  std::copy(uuid.begin(), uuid.end(), bytes.begin());
  return bytes;
}

}  // namespace

UniqueID UniqueID::generate(Moment now) {
  // RFC 9562, version 7: 48 bits of milliseconds, 4 bits of version, 12 bits of count, 2 bits of variant, 62 random.
  const std::uint64_t tick = nextTick(now);
  const std::uint64_t high = ((tick >> 12) << 16) | 0x7000u | (tick & 0xFFFu);
  const std::uint64_t low = (randomBits() & 0x3FFF'FFFF'FFFF'FFFFu) | 0x8000'0000'0000'0000u;
  Bytes bytes{};
  for (std::size_t i = 0; i < 8; ++i) {
    bytes[i] = static_cast<std::uint8_t>(high >> (56 - 8 * i));
    bytes[8 + i] = static_cast<std::uint8_t>(low >> (56 - 8 * i));
  }
  return UniqueID(bytes);
}

std::optional<UniqueID> UniqueID::fromText(std::string_view text) {
  if (!hasTheTextForm(text)) return std::nullopt;
  try {
    return UniqueID(bytesOf(boost::uuids::string_generator()(text.begin(), text.end())));
  } catch (const std::runtime_error&) {
    return std::nullopt;  // a character that is no hexadecimal digit
  }
}

std::string UniqueID::text() const {
  boost::uuids::uuid uuid{};
  std::copy(bytes_.begin(), bytes_.end(), uuid.begin());
  std::string result = boost::uuids::to_string(uuid);
  for (char& c : result) {
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

}  // namespace qz

std::size_t std::hash<qz::UniqueID>::operator()(const qz::UniqueID& id) const noexcept {
  // The lower half of every version in use is random, or a hash itself.
  std::uint64_t low = 0;
  std::memcpy(&low, id.bytes().data() + 8, sizeof low);
  return low;
}
