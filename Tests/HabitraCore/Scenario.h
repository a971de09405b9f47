#pragma once

#include <HabitraCore/HistoryWalk.h>

#include <cstdint>
#include <string>
#include <vector>

/// A history drawn as a text file, so that a person can check it by eye:
///
///     # What it shows.
///     due:     3 days a week
///     sign:    to do                      (or: to avoid)
///     weeks:   monday                     (the day on which they begin; sunday when absent)
///     created: 2024-01-01
///     today:   2024-01-08
///
///     2024-01-01..2024-01-04 Mon..Thu     | [skip-auto] each | skip       | 0/0      | 0+6 >= 3 .. 0+3 >= 3
///     2024-01-05..2024-01-06 Fri..Sat due | done each        | complete   | 1/1..2/2 | 0+2 < 3 .. 1+1 < 3
///     2024-01-07 Sun due                  | [miss-auto]      | miss       | 0/2      | 2+0 < 3
///     2024-01-08 Mon                      |                  | will skip* | 0/2      | 0+6 >= 3
///
///     last: completed 2024-01-06, missed 2024-01-07, skipped 2024-01-04
///     shares: 7 days 2 of 3, 30 days 2 of 3
///
/// The settings and the entries are read; all the rest is computed and must come out as it is written. So a new
/// scenario begins with the settings and lines such as `2024-01-05..2024-01-06 | done each`; HabitraScenario --write
/// adds what is missing, to be checked by eye.
///
/// The rule is one of
///
///     every day | mon wed fri | days 1 15 last last-1     (last-1: the day before the month's last one)
///     every 3 days
///     3 days a week                                       (a fortnight, a month, a year)
///     total 5 a week                                      (the longer period as one whole; a fortnight, ...)
///
/// Further settings, with their values when absent: `times`, the partial entries that one completion needs (1);
/// `reference`, the anchor of fortnights and intervals (none); `paused`, spans such as
/// `2024-01-03..2024-01-06, 2024-02-01..` (none); `measure`, the target of a measured task, such as `10 litres`,
/// `timed 30 minutes` or `rings` (none); `filled`, the first day to fill in (that of the first entry).
///
/// First column: the days, and `due` or `paused`. Equal days in a row share a line; a line that was read is not joined
/// with days beside it. A longer period has a line of its own with the name of its type, and its entries are stored
/// with its bounds, so that a history may hold periods of another frequency than today's.
///
/// Second: the entries in order of creation; with `each` every day of the line has them. An entry of a longer period
/// stands behind its day, `12:part` or, in a year, `03-12:part`. The amount that one reports stands in parentheses, in
/// the unit of the target, of timers in seconds. In brackets the entry that the walk fills in.
///
/// Third: the status, with the progress where a period needs several entries or is measured. A star says that an open
/// day is shown with an indicator, since the rule looks at the log.
///
/// Fourth: the streak, current/best. Over equal days it rests or grows by one a day.
///
/// Fifth, of rules that look back: what they had counted on the morning of the day, for several days that of the first
/// and of the last. Counted days, to do: completed days before + days to come, against the days required; to avoid:
/// the allowance that was left/the whole. Intervals: the day they count from + the days since. To avoid, `room` says
/// that a failure of the day is an allowed miss.
///
/// There are two simpler kinds of files. Without `today`, and with no setting but those of the rules, each line is an
/// action on a log of its own: what stands, what a person taps or writes, what stands then, and what the day shows:
///
///     part part             | tap-part  | part part part | complete 3/3
///     2:skip-auto 3:done    | 1:done    | 1:done 3:done  | complete
///
/// Entries and actions are those of a day of January 2024, which begins on a Monday; of the first where none is named.
/// A `tap` asks for a whole completion, or failure; the first two columns are read.
///
/// Without any setting, each line is a rule and the columns that keep it: mode, weekdays, days or interval, times,
/// days of the month. Both ways, `<->`, or only as it is read, `<-`:
///
///     total 4 a year times 2 | <-> | 9 0 4 2 0
namespace habitra {

struct Scenario {
  /// A line as it was read: the days that it covers, and what stands before it.
  struct Line {
    std::int32_t from = 0;
    std::int32_t to = 0;
    std::vector<std::string> remarks;  ///< comments and empty lines
  };

  std::vector<std::string> head;  ///< up to the first day, as read
  TaskRules rules;
  HistoryScope scope;
  std::vector<LoggedEntry> log;      ///< by day, then in order of creation
  std::vector<Line> lines;           ///< in order of days
  std::vector<std::string> remarks;  ///< between the last day and the figures

  /// Reads the text of a file. Throws std::runtime_error, with the line that is wrong.
  [[nodiscard]] static Scenario read(const std::string& text);

  /// The text as it has to be: settings, remarks and entries as they were read, all the rest as the walk gives it.
  [[nodiscard]] std::string drawn() const;
};

/// A file of any kind as it has to be.
[[nodiscard]] std::string drawn(const std::string& text);

/// The third column.
[[nodiscard]] std::string statusText(const WalkedPeriod& walked);

/// A text without empty lines and with runs of spaces made one: the form in which two drawings are compared.
[[nodiscard]] std::string evened(const std::string& text);

}  // namespace habitra
