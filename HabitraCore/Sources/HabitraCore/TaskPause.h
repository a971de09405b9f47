#pragma once

#include <QZDateTime/YYYYMMDD.h>

#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace habitra {

/// A span of days on which a task rests: none of them is due, and none breaks a streak. It may lie in the past or in
/// the future. Coded with the keys "from" and "to"; without "to" the pause goes on until it is ended.
struct TaskPause {
  qz::YYYYMMDD from;
  std::optional<qz::YYYYMMDD> to;  ///< last day of the pause; a pause that ends before it begins pauses nothing

  [[nodiscard]] bool contains(const qz::YYYYMMDD& date) const { return from <= date && (!to || date <= *to); }

  friend bool operator==(const TaskPause&, const TaskPause&) = default;
};

void to_json(nlohmann::json& json, const TaskPause& pause);
/// Throws qz::DecodingError for a missing "from" and for a day that the calendar does not have or that 32 bits do
/// not hold.
void from_json(const nlohmann::json& json, TaskPause& pause);

}  // namespace habitra
