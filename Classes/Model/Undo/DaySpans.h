#pragma once

#include <cstdint>
#include <map>
#include <optional>

namespace habitra {

/// A set of days as the store keeps them, made of spans whose ends are included.
class DaySpans {
 public:
  void add(std::int32_t from, std::int32_t to);

  [[nodiscard]] bool overlaps(std::int32_t from, std::int32_t to) const;
  [[nodiscard]] bool contains(std::int32_t day) const { return overlaps(day, day); }
  /// The first of the days `from` to `to` that it contains.
  [[nodiscard]] std::optional<std::int32_t> firstWithin(std::int32_t from, std::int32_t to) const;
  /// By their beginnings; no two overlap.
  [[nodiscard]] const std::map<std::int32_t, std::int32_t>& ends() const { return ends_; }

 private:
  std::map<std::int32_t, std::int32_t> ends_;  ///< by their beginnings; no two overlap
};

}  // namespace habitra
