#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskRules.h>

#include <cstdint>
#include <span>
#include <vector>

/// For sources of this module.
namespace habitra {

/// A log in the order in which a walk meets it: by first day of the period, of two periods that begin together the
/// longer first, entries of a period in order of creation. A log of day periods lies in the store that way already and
/// is used where it is; any other is copied and put in order once.
class LoggedEntries {
 public:
  /// Entries after `today` are left out unless they are ahead; those without a usable period get that of their day.
  LoggedEntries(std::span<const LoggedEntry> entries, const TaskRules& rules, std::int32_t today);

  LoggedEntries(const LoggedEntries&) = delete;
  LoggedEntries& operator=(const LoggedEntries&) = delete;

  [[nodiscard]] std::span<const LoggedEntry> inOrder() const { return inOrder_; }

 private:
  std::vector<LoggedEntry> copy_;
  std::span<const LoggedEntry> inOrder_;
};

}  // namespace habitra
