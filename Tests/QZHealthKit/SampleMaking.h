#pragma once

#include <QZHealthKit/QZHKSample.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

/// Samples for tests, by minutes from a moment that stands for the beginning of a day.
namespace qz {

inline Moment minute(std::int64_t minutes) {
  return Moment(std::chrono::hours(24 * 20'000)) + std::chrono::minutes(minutes);
}

inline UniqueID identifier(std::uint16_t number) {
  UniqueID::Bytes bytes{};
  bytes[14] = static_cast<std::uint8_t>(number >> 8);
  bytes[15] = static_cast<std::uint8_t>(number & 0xFF);
  return UniqueID(bytes);
}

/// Of one test, each has an identifier of its own.
inline QZHKSample sample(QZHKObjectType type, std::int64_t start, std::int64_t end, QZHKSampleValue value = {},
                         std::string source = "Watch") {
  static std::uint16_t number = 0;
  return {.identifier = identifier(++number),
          .objectType = type,
          .start = minute(start),
          .end = minute(end),
          .value = std::move(value),
          .source = std::move(source),
          .device = std::nullopt,
          .task = std::nullopt};
}

}  // namespace qz
