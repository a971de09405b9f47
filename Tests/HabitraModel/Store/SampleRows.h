#pragma once

#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/EntityDescription.h>

#include <limits>

namespace habitra {

// Rows made from the description of their entity, so that an attribute that is added is tested by being there.

inline void setSample(std::int64_t n, bool& value) { value = n % 2 != 0; }
template <std::signed_integral T>
void setSample(std::int64_t n, T& value) {
  // Both ends of the width, so that a column that is too narrow shows.
  value = n % 3 == 0 ? std::numeric_limits<T>::min() : static_cast<T>(std::numeric_limits<T>::max() - n % 50);
}
inline void setSample(std::int64_t n, double& value) { value = static_cast<double>(n) / 7 - 3; }
inline void setSample(std::int64_t n, std::string& value) {
  value = "Schritt \xC3\xA4 " + std::to_string(n) + std::string("\0'\n", 3);
}
inline void setSample(std::int64_t n, Bytes& value) { value = {0, 255, static_cast<std::uint8_t>(n)}; }
inline void setSample(std::int64_t n, qz::Moment& value) {
  value = qz::Moment(std::chrono::microseconds(n % 1000 * -12'345'678'901));
}

/// Gives every attribute but the relationships a value of its own.
inline void fillWithSamples(const EntityDescription& entity, void* object, std::int64_t seed) {
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    const std::int64_t n = seed + static_cast<std::int64_t>(i);
    visitField(entity.attributes[i], object, [n]<typename T>(T& value) {
      if constexpr (isOptionalField<T>)
        setSample(n, value.emplace());
      else if constexpr (!std::is_same_v<T, ObjectID>)
        setSample(n, value);
    });
  }
}

template <typename T>
T sample(std::int64_t seed) {
  T object;
  fillWithSamples(T::description(), &object, seed);
  return object;
}

}  // namespace habitra
