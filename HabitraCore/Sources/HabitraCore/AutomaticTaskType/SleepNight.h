#pragma once

#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <QZDateTime/TimeZone.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZKit/Clock.h>

#include <chrono>
#include <optional>
#include <set>
#include <span>

/// What samples of sleep say of a night.
namespace habitra {

/// A night belongs to the day on which it ends: what is slept from six hours before a day begins until six hours before
/// the next one counts for it. So an evening and its morning are one night, and a nap counts where it is taken.
inline constexpr std::chrono::hours nightLead{6};

/// Stretches with no more than this between them are one sleep, in which somebody got up for a while.
inline constexpr std::chrono::hours longestWaking{2};

/// When the longest sleep of a night began and ended; what was not recorded is absent.
struct SleepNight {
  std::optional<qz::Moment> inBed;
  std::optional<qz::Moment> asleep;
  std::optional<qz::Moment> awake;
  std::optional<qz::Moment> outOfBed;

  friend bool operator==(const SleepNight&, const SleepNight&) = default;
};

/// Of samples of sleep in order of their start; none without any.
[[nodiscard]] std::optional<SleepNight> sleepNight(std::span<const qz::QZHKSample> samples);

/// The moment of a night that the speeds ask about ("asleep before"); none where it was not recorded.
[[nodiscard]] std::optional<qz::Moment> momentOf(const SleepNight& night, TypeSpeeds speeds);

/// Whether a moment lies before, or after, the time of day `secondsOfDay` that is nearest to it on the clock of the
/// zone: ten past midnight is after half past eleven. The time itself is both.
[[nodiscard]] bool isKept(qz::Moment moment, double secondsOfDay, TypeSpeeds speeds, const qz::TimeZone& timeZone);

/// What of a night counts for a task on sleep with these speeds, without any for the usual ones. All sleep is "asleep",
/// in whichever stage; being in bed is all that is recorded of it.
[[nodiscard]] std::set<qz::QZHKSleepValue> sleepValues(HealthType type, TypeSpeeds speeds);

}  // namespace habitra
