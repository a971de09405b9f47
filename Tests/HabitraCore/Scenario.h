#pragma once

#include <HabitraCore/HistoryWalk.h>

#include <filesystem>
#include <string>
#include <vector>

/// A history drawn as a text file, one line a day, so that a person can check it by eye:
///
///     # What it shows.
///     due:     mon wed fri                  (or: days 1 15 last last-1)
///     times:   2                            (partial entries that a day needs; 1 when absent)
///     sign:    to do                        (or: to avoid)
///     created: 2024-01-01
///     filled:  2024-01-03                   (first day to fill in; the creation day when absent)
///     today:   2024-01-05
///
///     2024-01-01 Mon due  | part part         | complete 2/2 | 1/1
///     2024-01-02 Tue      | [skip-auto]       | skip 0/2     | 1/1
///     ...
///     last: completed 2024-01-01, missed never, skipped 2024-01-02
///     shares: 7 days 1 of 1, 30 days 1 of 1
///
/// The columns are the day; its entries in order of creation, those that the walk fills in in brackets; the status,
/// with progress where a day needs several; the streak, current/best. The settings and the entries are read; all the
/// rest is computed and must come out as it is written.
namespace habitra {

struct Scenario {
  TaskRules rules;
  HistoryScope scope;
  std::vector<LoggedEntry> log;
  std::vector<std::string> expected;  ///< the lines after the settings, spaces evened out

  /// Throws std::runtime_error with the offending line.
  [[nodiscard]] static Scenario read(const std::filesystem::path& file);

  /// The lines that the walk gives.
  [[nodiscard]] std::vector<std::string> computed() const;
};

/// One line with runs of spaces made one.
[[nodiscard]] std::string evened(const std::string& line);

}  // namespace habitra
