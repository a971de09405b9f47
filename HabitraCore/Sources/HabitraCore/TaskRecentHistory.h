#pragma once

#include <HabitraCore/TaskFrequency.h>

#include <cstdint>

namespace habitra {

/// What the recent past of a task looks like.
struct TaskRecentHistory {
  enum class PreviousSuccessType : std::uint8_t { last7, last30, pastMonth, pastYear, allTime };

  /// How many of the judged periods of a span succeeded. A period is judged by its final status, as success or failure;
  /// skips, allowed misses and undecided periods are not judged. It lies in the span in which its last day lies; the
  /// current one ends today, and counts once it is decided.
  struct PreviousDaysSuccess {
    PreviousSuccessType type = PreviousSuccessType::last7;
    std::int64_t numSamples = 0;  ///< periods judged
    double successPct = 0.0;      ///< share of them that succeeded, 0 to 1; 0 without a sample

    friend bool operator==(const PreviousDaysSuccess&, const PreviousDaysSuccess&) = default;
  };
};

}  // namespace habitra
