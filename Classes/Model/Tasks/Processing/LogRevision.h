#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace habitra {

/// What is about to be done to a log: a walk over it goes by what it will be.
struct LogRevision {
  std::set<LogKey> removed;
  std::vector<LoggedEntry> added;  ///< one with the order of an entry that is there takes its place
  /// The first day of the earliest period that is touched: from there on days are filled in.
  std::optional<qz::YYYYMMDD> from;

  [[nodiscard]] bool isEmpty() const { return removed.empty() && added.empty(); }

  /// Lets `entries`, those of the days `first` to `last` as they are stored, be what they will be, in order.
  void applyTo(std::vector<LoggedEntry>& entries, std::int32_t first, std::int32_t last) const;
};

}  // namespace habitra
