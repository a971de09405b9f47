#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>

namespace habitra {

/// Who asked for a change to a task's log. The position is its stored value; coded, since requests travel between
/// devices, it is its name without a payload: {"userInitiatedFromDeepLink": {}}.
enum class TaskModifyContext : std::int16_t {
  userInitiatedFromMainApp = 0,
  userInitiatedFromAppleWatchApp = 1,
  userInitiatedFromNotification = 2,
  userInitiatedFromDeepLink = 3,
  userInitiatedPopulateInitialStreak = 4,
  userInitiatedFromShortcut = 5,
  systemInitiatedFromDeviceActivityExtension = 6,  ///< also the context of what processing records by itself
};

void to_json(nlohmann::json& json, TaskModifyContext context);
/// Throws qz::DecodingError for anything that to_json does not give.
void from_json(const nlohmann::json& json, TaskModifyContext& context);

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskModifyContext> {
  using T = habitra::TaskModifyContext;
  static constexpr std::array<RawValueRow<T, std::int16_t>, 7> rows{{
      {T::userInitiatedFromMainApp, 0, "userInitiatedFromMainApp"},
      {T::userInitiatedFromAppleWatchApp, 1, "userInitiatedFromAppleWatchApp"},
      {T::userInitiatedFromNotification, 2, "userInitiatedFromNotification"},
      {T::userInitiatedFromDeepLink, 3, "userInitiatedFromDeepLink"},
      {T::userInitiatedPopulateInitialStreak, 4, "userInitiatedPopulateInitialStreak"},
      {T::userInitiatedFromShortcut, 5, "userInitiatedFromShortcut"},
      {T::systemInitiatedFromDeviceActivityExtension, 6, "systemInitiatedFromDeviceActivityExtension"},
  }};
};
