#include <HabitraBackup/DerivedIdentifier.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <iterator>

namespace habitra {

qz::UniqueID identifierOfText(std::string_view text, std::uint32_t number) {
  XXH128_canonical_t hash;
  XXH128_canonicalFromHash(&hash, XXH3_128bits_withSeed(text.data(), text.size(), number));
  qz::UniqueID::Bytes bytes{};
  std::copy(std::begin(hash.digest), std::end(hash.digest), bytes.begin());
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x80U);  // version 8: made by a rule of one's own
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);
  return qz::UniqueID(bytes);
}

}  // namespace habitra
