#pragma once

#include <HabitraBackup/CSV/HabitraCSVBackupRow.h>
#include <HabitraBackup/Files/ByteStreams.h>

#include <functional>

namespace habitra {

/// Turns rows into the text of a task history. The first line holds the nine headers in their order; then
///
///     entry_type       one of the sixteen texts
///     entry_date       eight digits, 20240131
///     entry_timestamp  2024-01-31T08:15:00Z, whole seconds, UTC
///     quantity         1.5 or 3.0: always a point, never an exponent, the fewest digits that read back as the same
///                      number; one that is not finite counts as absent
///     page             digits
///
/// A day or moment that could not be read back (no day of the calendar, years beyond 9999) counts as absent, too.
/// Stateless: may be used from any thread.
class HabitraCSVEncoder {
 public:
  /// Writes the header and every row that `produce` hands to the function it is given.
  void encode(const std::function<void(const CSVRowHandler&)>& produce, const ByteSink& sink) const;
};

/// Turns the text of a task history into rows. Columns are found by the names in the first line, in any order; a
/// column that is missing reads as absent, one with a name of its own is ignored. Refused with a CSVError that names
/// line and column, beside what CSVReader refuses: a header without "title", with one of the nine names twice, or with
/// a name that is nearly that of a column the file lacks; and values in other forms than these:
///
///     entry_type       one of the sixteen texts
///     entry_date       eight digits that name a day of the calendar, years 1 to 9999
///     entry_timestamp  a date-time of RFC 3339, with any offset and fraction, in the years 0 to 9999 of UTC
///     quantity         digits with or without a point and more digits, after a minus sign or none
///     page             1 to 32768
///
/// An icon with an unknown prefix reads as absent. Stateless: may be used from any thread.
class HabitraCSVDecoder {
 public:
  /// Reads `source` to its end; what it or `onRow` throws reaches the caller.
  void decode(const ByteSource& source, const CSVRowHandler& onRow) const;
};

}  // namespace habitra
