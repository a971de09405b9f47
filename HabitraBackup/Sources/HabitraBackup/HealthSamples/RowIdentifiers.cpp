#include <HabitraBackup/DerivedIdentifier.h>
#include <HabitraBackup/HealthSamples/RowIdentifiers.h>

#include <fmt/format.h>

#include <bit>
#include <chrono>
#include <iterator>
#include <string>

namespace habitra {

namespace {

void append(std::string& text, const std::optional<qz::QZHKQuantity>& quantity) {
  // The number by its bits, which no library ever spells in another way.
  if (quantity)
    fmt::format_to(std::back_inserter(text), "{:016X} {}", std::bit_cast<std::uint64_t>(quantity->value),
                   qz::rawValue(quantity->unit));
  text += '\n';
}

/// All that a row says, in one form whatever the spelling of the file is.
std::string content(const qz::QZHKSample& sample) {
  std::string text =
      fmt::format("{}\n{}\n{}\n{}\n", qz::rawValue(sample.objectType), sample.start.time_since_epoch().count(),
                  sample.end.time_since_epoch().count(), sample.source);
  append(text, sample.quantity());
  if (const auto sleep = sample.sleepValue()) text += qz::rawValue(*sleep);
  if (const auto workout = sample.workout()) {
    text += qz::rawValue(workout->activityType);
    text += '\n';
    append(text, workout->energy);
    append(text, workout->distance);
  }
  return text;
}

/// The hash with the start in its leading 48 bits.
qz::UniqueID identifierOf(const std::string& content, qz::Moment start, std::uint32_t number) {
  qz::UniqueID::Bytes bytes = identifierOfText(content, number).bytes();
  const auto milliseconds =
      static_cast<std::uint64_t>(std::chrono::floor<std::chrono::milliseconds>(start).time_since_epoch().count());
  for (std::size_t at = 0; at < 6; ++at) bytes[at] = static_cast<std::uint8_t>(milliseconds >> (40 - 8 * at) & 0xFFU);
  return qz::UniqueID(bytes);
}

}  // namespace

qz::UniqueID RowIdentifiers::next(const qz::QZHKSample& sample) {
  const std::string said = content(sample);
  const qz::UniqueID first = identifierOf(said, sample.start, 0);
  const std::uint32_t number = counts_[first]++;
  return number == 0 ? first : identifierOf(said, sample.start, number);
}

}  // namespace habitra
