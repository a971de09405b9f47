#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace qz {

/// Iterates over the bits that are set in a number, lowest first, as the values that they stand for: what an option set
/// needs to be a range. A forward iterator; the end of every range is that of no bits.
template <typename Value, Value (*valueOfBit)(std::int64_t)>
class BitIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = Value;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = Value;

  constexpr BitIterator() = default;
  explicit constexpr BitIterator(std::uint64_t bits) : rest_(bits) {}

  constexpr Value operator*() const { return valueOfBit(std::countr_zero(rest_)); }
  constexpr BitIterator& operator++() {
    rest_ &= rest_ - 1;
    return *this;
  }
  constexpr BitIterator operator++(int) {
    const BitIterator before = *this;
    ++*this;
    return before;
  }
  friend constexpr bool operator==(const BitIterator&, const BitIterator&) = default;

 private:
  std::uint64_t rest_ = 0;  ///< the bits not yet passed
};

}  // namespace qz
