#pragma once

#include <QZKit/Checked.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace habitra {

/// How many periods in a row a task was kept, and the most it ever was. A plain value, coded with the keys "current"
/// and "best".
struct StreakStatus {
  /// A count worth a word: 7, 14, 30, 60, 100, 150, 200, 250, 300, 365 and their multiples below the next of them, and
  /// every full hundred from 400 on.
  struct Milestone {
    enum class Kind : std::uint8_t {
      exact,       ///< the count is itself the milestone
      mostRecent,  ///< the milestone was passed
    };
    Kind kind;
    std::int64_t value;

    [[nodiscard]] static constexpr Milestone exact(std::int64_t value) { return {Kind::exact, value}; }
    [[nodiscard]] static constexpr Milestone mostRecent(std::int64_t value) { return {Kind::mostRecent, value}; }

    friend constexpr bool operator==(const Milestone&, const Milestone&) = default;
  };

  std::int64_t current = 0;
  std::int64_t best = 0;

  /// One more, or so many in a row. Stops the program on overflow.
  constexpr void increment(std::int64_t by = 1) {
    current = qz::checkedAdd(current, by);
    best = std::max(best, current);
  }
  /// Back to 0; the best stays, and is never below 0.
  constexpr void reset() {
    current = 0;
    best = std::max(best, std::int64_t{0});
  }

  [[nodiscard]] constexpr bool isBest() const { return current >= best; }
  [[nodiscard]] constexpr bool nearlyBest() const { return best > INT64_MIN && current == best - 1; }
  /// The milestone that `current` is at or has passed last; none below 7.
  [[nodiscard]] std::optional<Milestone> currentMilestone() const;

  friend constexpr bool operator==(const StreakStatus&, const StreakStatus&) = default;
};

void to_json(nlohmann::json& json, const StreakStatus& streak);
/// Throws qz::DecodingError for a missing key or one whose value is no whole number.
void from_json(const nlohmann::json& json, StreakStatus& streak);

}  // namespace habitra
