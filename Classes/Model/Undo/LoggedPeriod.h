#pragma once

#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>

namespace habitra {

/// The days that an entry of the log counts for, both ends included: its period, or its day when it has none.
struct LoggedPeriod {
  std::int32_t from;
  std::int32_t to;

  [[nodiscard]] static LoggedPeriod of(const TaskLogEntryEntity& entry) {
    const bool hasPeriod = entry.entryPeriodFrom > 0 && entry.entryPeriodFrom <= entry.entryPeriodTo;
    return hasPeriod ? LoggedPeriod{entry.entryPeriodFrom, entry.entryPeriodTo}
                     : LoggedPeriod{entry.entryDate, entry.entryDate};
  }
  [[nodiscard]] bool overlaps(const LoggedPeriod& other) const { return from <= other.to && other.from <= to; }

  friend bool operator==(const LoggedPeriod&, const LoggedPeriod&) = default;
};

/// The day of an entry as it is stored, if passes can judge it: one of the calendar, and none after latestKeptDay.
[[nodiscard]] inline std::optional<qz::YYYYMMDD> judgedDay(std::int32_t stored) {
  const auto day = existingDayFromStored(stored);
  return day && *day <= latestKeptDay ? day : std::nullopt;
}

}  // namespace habitra
