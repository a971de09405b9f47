#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

#include <cstdint>

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

}  // namespace habitra
