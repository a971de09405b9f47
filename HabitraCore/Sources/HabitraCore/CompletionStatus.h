#pragma once

#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskProgress.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace habitra {

struct StreakedCompletionStatus;

/// What a period of a task has come to, with its progress. Coded with the keys "status" and "codableProgress".
///
/// Statuses fall into two families, that of a task to do and that of a task to avoid; no entry leads from one into the
/// other.
struct CompletionStatus {
  class Status {
   public:
    enum class Kind : std::uint8_t {
      positiveIncomplete,   ///< to do, not yet done in an open period; has a skip mode
      negativeComplete,     ///< to avoid, not failed so far; has a skip mode
      positiveComplete,     ///< done
      positiveMiss,         ///< missed
      positiveSkip,         ///< skipped
      negativeMiss,         ///< to avoid, and it was done
      negativeAllowedMiss,  ///< the same within the allowance
    };
    using SkipMode = TaskFrequency::SkipMode;

    [[nodiscard]] static constexpr Status positiveIncomplete(SkipMode mode) {
      return Status(Kind::positiveIncomplete, mode);
    }
    [[nodiscard]] static constexpr Status negativeComplete(SkipMode mode) {
      return Status(Kind::negativeComplete, mode);
    }
    [[nodiscard]] static constexpr Status positiveComplete() { return Status(Kind::positiveComplete, {}); }
    [[nodiscard]] static constexpr Status positiveMiss() { return Status(Kind::positiveMiss, {}); }
    [[nodiscard]] static constexpr Status positiveSkip() { return Status(Kind::positiveSkip, {}); }
    [[nodiscard]] static constexpr Status negativeMiss() { return Status(Kind::negativeMiss, {}); }
    [[nodiscard]] static constexpr Status negativeAllowedMiss() { return Status(Kind::negativeAllowedMiss, {}); }

    [[nodiscard]] constexpr Kind kind() const { return kind_; }
    /// How the day shows; of the two kinds that have it.
    [[nodiscard]] constexpr std::optional<SkipMode> skipMode() const {
      return hasSkipMode(kind_) ? std::optional(skipMode_) : std::nullopt;
    }
    /// Whether this is a status of a task to avoid.
    [[nodiscard]] constexpr bool isNegative() const {
      return kind_ == Kind::negativeComplete || kind_ == Kind::negativeMiss || kind_ == Kind::negativeAllowedMiss;
    }

    /// To avoid, and it was done, within the allowance or not.
    [[nodiscard]] constexpr bool isFailed() const {
      return kind_ == Kind::negativeMiss || kind_ == Kind::negativeAllowedMiss;
    }

    [[nodiscard]] static constexpr bool hasSkipMode(Kind kind) {
      return kind == Kind::positiveIncomplete || kind == Kind::negativeComplete;
    }

    friend constexpr bool operator==(const Status&, const Status&) = default;

   private:
    constexpr Status(Kind kind, SkipMode mode) : kind_(kind), skipMode_(mode) {}

    Kind kind_;
    SkipMode skipMode_;  ///< the first mode in the kinds that have none, so that equality is that of the bytes
  };

  Status status = Status::positiveIncomplete(TaskFrequency::SkipMode::willMissWithoutIndicator);
  TaskProgressCodable codableProgress;

  /// The status of a period of a task to do without an entry, and that of a completed one.
  [[nodiscard]] static CompletionStatus unchecked(
      const TaskProgressCodable& progress,
      TaskFrequency::SkipMode mode = TaskFrequency::SkipMode::willMissWithoutIndicator);
  [[nodiscard]] static CompletionStatus completed(const TaskProgressCodable& progress);

  [[nodiscard]] bool isNegative() const { return status.isNegative(); }

  /// This status after one more entry of its period. `streak` is the task's streak as this status left it.
  [[nodiscard]] StreakedCompletionStatus applyEntryType(const StreakStatus& streak, TaskLogEntryType type) const;

  /// What the rules say about a period that is tapped.
  struct TapRules {
    TaskFrequency::SkipMode skipMode = TaskFrequency::SkipMode::willMissWithoutIndicator;  ///< when it is unchecked
    bool missIsAllowed = false;  ///< to avoid: one more failure lies within the allowance
  };

  /// The status after the user taps the task once: the entry of nextEntryType() (TaskLogEntryChoice.h) replaces what it
  /// supersedes. `streak` is the streak as it stood before this period, since what counted within it is replaced.
  [[nodiscard]] StreakedCompletionStatus next(const StreakStatus& streak, bool isPartial, const TapRules& rules) const;
  [[nodiscard]] StreakedCompletionStatus next(const StreakStatus& streak, bool isPartial) const;

  /// The status once a timer that runs for the task is stopped, with the seconds on it (below 0 or not a number: none)
  /// added to the completion under way. Where that fills the period's target, a task to do becomes complete and one to
  /// avoid a failure. Otherwise, and where it was complete or failed before or its record is not a timer, the status
  /// stays, and only the progress shows the duration. `streak` as above; what the period counts for is counted again.
  [[nodiscard]] StreakedCompletionStatus next(const StreakStatus& streak, double pendingTimerDuration,
                                              const TapRules& rules) const;
  [[nodiscard]] StreakedCompletionStatus next(const StreakStatus& streak, double pendingTimerDuration) const;

  friend bool operator==(const CompletionStatus&, const CompletionStatus&) = default;
};

struct StreakedCompletionStatus {
  CompletionStatus completionStatus;
  StreakStatus streak;

  friend bool operator==(const StreakedCompletionStatus&, const StreakedCompletionStatus&) = default;
};

/// A kind is spoken of by its name alone; it has no other raw value.
}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::CompletionStatus::Status::Kind> {
  using T = habitra::CompletionStatus::Status::Kind;
  static constexpr std::array<RawValueRow<T, std::string_view>, 7> rows{{
      {T::positiveIncomplete, "positiveIncomplete", "positiveIncomplete"},
      {T::negativeComplete, "negativeComplete", "negativeComplete"},
      {T::positiveComplete, "positiveComplete", "positiveComplete"},
      {T::positiveMiss, "positiveMiss", "positiveMiss"},
      {T::positiveSkip, "positiveSkip", "positiveSkip"},
      {T::negativeMiss, "negativeMiss", "negativeMiss"},
      {T::negativeAllowedMiss, "negativeAllowedMiss", "negativeAllowedMiss"},
  }};
};

namespace habitra {

/// A status is coded as {"positiveIncomplete": {"_0": "mwi"}}, one without skip mode as {"positiveComplete": {}}.
/// Decoding anything else throws qz::DecodingError.
void to_json(nlohmann::json& json, const CompletionStatus::Status& status);
[[nodiscard]] CompletionStatus::Status decodedStatus(const nlohmann::json& json);
void to_json(nlohmann::json& json, const CompletionStatus& status);
void from_json(const nlohmann::json& json, CompletionStatus& status);

}  // namespace habitra
