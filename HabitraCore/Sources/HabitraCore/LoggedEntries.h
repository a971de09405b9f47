#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskRules.h>

#include <cstdint>
#include <span>
#include <vector>

/// For sources of this module.
namespace habitra {

/// A log in the order in which a walk meets it: by first day of the period, entries of a period in order of creation.
/// Periods do not overlap here: of stored ones that do, the one that ends first stands, those that lie inside it give
/// their entries to it, and the others keep the days after it. A log of day periods lies in the store that way already
/// and is used where it is; any other is copied and put in order once.
class LoggedEntries {
 public:
  /// Days in integer form.
  struct Days {
    std::int32_t created = 0;  ///< first day of the history
    std::int32_t today = 0;
    std::int32_t closedThrough = 0;  ///< where the walk goes on from; 0: from the beginning
  };

  /// Left out are entries after `today` and those of a day that the calendar does not have; those without a usable
  /// period get that of their day. Periods that ended before `created`, or up to `closedThrough`, may be left out.
  LoggedEntries(std::span<const LoggedEntry> entries, const TaskRules& rules, const Days& days);

  LoggedEntries(const LoggedEntries&) = delete;
  LoggedEntries& operator=(const LoggedEntries&) = delete;

  [[nodiscard]] std::span<const LoggedEntry> inOrder() const { return inOrder_; }

 private:
  std::vector<LoggedEntry> copy_;
  std::span<const LoggedEntry> inOrder_;
};

}  // namespace habitra
