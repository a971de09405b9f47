#pragma once

#include <HabitraCore/Notifications/TaskNotificationSettings.h>
#include <QZKit/UniqueID.h>

#include <cstdint>

namespace habitra {

/// What kind of task it is, as far as the settings that a new one gets are concerned.
class DefaultSettingsTaskType {
 public:
  enum class Kind : std::uint8_t { timer, screenTime, untimed, meditation };

  /// A task with a timer of so many seconds.
  [[nodiscard]] static constexpr DefaultSettingsTaskType timer(double duration) { return {Kind::timer, duration}; }
  /// A limit of so many seconds in front of a screen.
  [[nodiscard]] static constexpr DefaultSettingsTaskType screenTime(double limit) { return {Kind::screenTime, limit}; }
  [[nodiscard]] static constexpr DefaultSettingsTaskType untimed() { return {Kind::untimed, 0}; }
  [[nodiscard]] static constexpr DefaultSettingsTaskType meditation() { return {Kind::meditation, 0}; }

  [[nodiscard]] constexpr Kind kind() const { return kind_; }
  /// Seconds; 0 for the kinds that have none.
  [[nodiscard]] constexpr double duration() const { return duration_; }

  friend bool operator==(const DefaultSettingsTaskType&, const DefaultSettingsTaskType&) = default;

 private:
  constexpr DefaultSettingsTaskType(Kind kind, double duration) : kind_(kind), duration_(duration) {}

  Kind kind_;
  double duration_;
};

/// The settings of a newly made task. All kinds: it counts on the badge while incomplete, and reminderType is none: no
/// automatic reminders, and none of its own. Only for a screen-time limit of more than 10 minutes it is custom, with
/// one reminder 5 minutes before the limit is reached. What else differs by kind stands in one table in the source.
/// `reminderID` becomes the identifier of that one reminder, since nothing here makes identifiers; where there is no
/// reminder it is not used.
[[nodiscard]] TaskNotificationSettings defaultNotificationSettings(const DefaultSettingsTaskType& type,
                                                                   const qz::UniqueID& reminderID);

}  // namespace habitra
