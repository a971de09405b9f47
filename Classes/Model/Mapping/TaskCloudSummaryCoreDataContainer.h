#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/StoredValues.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace habitra {

/// What those who share a task are told of it without seeing its log.
struct TaskCloudSummary {
  qz::UniqueID uniqueId;  ///< the task's
  std::optional<std::string> title;
  std::optional<std::string> imageName;
  std::optional<std::string> colorInfo;
  bool isNegative = false;
  std::optional<TaskFrequency> frequency;  ///< none where the task's cannot be read
  std::int64_t activeStreak = 0;
  std::int64_t bestStreak = 0;
  std::optional<std::string> todayStatus;  ///< as a person reads it
  qz::Moment updated{};                    ///< when all of this was so

  friend bool operator==(const TaskCloudSummary&, const TaskCloudSummary&) = default;
};

/// A summary with the version of its form, as TaskShareEntity::summaryJson keeps it:
/// `{"version": 1, "summary": {...}}`. The summary is coded under the names of its fields, an absent field as an absent
/// key, the moment in microseconds since 1970.
struct TaskCloudSummaryCoreDataContainer {
  static constexpr std::int64_t currentVersion = 1;

  TaskCloudSummary summary;

  [[nodiscard]] Bytes coded() const;
  /// None where the bytes are not such a form, or one of another version.
  [[nodiscard]] static std::optional<TaskCloudSummaryCoreDataContainer> fromCoded(const std::optional<Bytes>& bytes);

  /// The XXH3 hash (64 bits) of the coded form of the summary without its moment: while it stays the same, there is
  /// nothing new to tell. The same in every run and build.
  [[nodiscard]] std::int64_t hashValue() const;

  friend bool operator==(const TaskCloudSummaryCoreDataContainer&, const TaskCloudSummaryCoreDataContainer&) = default;
};

/// The summary in the row of a share; none where there is none that can be read.
[[nodiscard]] std::optional<TaskCloudSummary> summaryOf(const TaskShareEntity& share);

/// Keeps the summary, its hash and its moment. Gives false, and changes nothing, when the row says the same already.
bool setSummary(TaskShareEntity& share, const TaskCloudSummary& summary);

}  // namespace habitra
