#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/Exchange/ImportRemarks.h>
#include <HabitraBackup/Files/ByteStreams.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/TimeZone.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// What other habit trackers have written, turned into a backup document, so that a person can move in with their whole
/// history. docs/MovingIn.md says what is taken over from each.
namespace habitra {

/// What came over of one habit, and what did not.
struct ForeignHabitReport {
  std::string title;
  std::size_t entries = 0;  ///< all entries of its log
  std::size_t skips = 0;    ///< those of them that are skips
  std::size_t misses = 0;   ///< those of them that are misses
  std::size_t notes = 0;
  std::size_t amounts = 0;  ///< entries that say an amount
  bool isArchived = false;
  /// What has no place here or became something else, a sentence each without a full stop.
  std::vector<std::string> remarks;

  friend bool operator==(const ForeignHabitReport&, const ForeignHabitReport&) = default;
};

struct ForeignHistory {
  std::string format;  ///< "Loop Habit Tracker, database"
  HabitraJSONBackup document;
  std::vector<ForeignHabitReport> habits;  ///< one for each task of the document, in the same order
  std::vector<std::string> remarks;        ///< what concerns no single habit

  /// What an import's report has to say beside its own counts: "among them 2 skips", `the question "..." has no place
  /// here`.
  [[nodiscard]] ImportRemarks importRemarks() const;
};

/// What a foreign file leaves to the one who reads it.
struct ForeignHistorySettings {
  qz::Moment now;                ///< when the document counts as made
  qz::TimeZone timeZone;         ///< in which the device that wrote the file showed its times
  qz::DayOfWeek firstDayOfWeek;  ///< of the habits, and for amounts that are wanted over a week
};

// The readers, one for each way in which another tracker's history is given. Nothing is ever written, neither to it nor
// beside it. The document holds what the file says and nothing else: no entry has an identifier, one has a moment of
// making only where the file says it, a habit has neither where the file does not. Habits and their entries are in
// order, entries by day.
//
// All throw qz::Error for what is nothing that is known, or damaged: which file, where in it, what was found and what
// was expected. They may be called from any thread; `progress`, where there is one, is told on it.

/// A folder with the CSV export of Loop Habit Tracker, or with the two files of harsh.
[[nodiscard]] ForeignHistory readForeignFolder(const std::filesystem::path& folder,
                                               const ForeignHistorySettings& settings,
                                               const ExchangeProgress& progress = {});
/// A zip archive of the CSV export of Loop Habit Tracker.
[[nodiscard]] ForeignHistory readForeignArchive(const std::filesystem::path& archive,
                                                const ForeignHistorySettings& settings,
                                                const ExchangeProgress& progress = {});
/// A SQLite database: that of Loop Habit Tracker or of Tickmate, by its tables.
[[nodiscard]] ForeignHistory readForeignDatabase(const std::filesystem::path& file,
                                                 const ForeignHistorySettings& settings,
                                                 const ExchangeProgress& progress = {});
/// The JSON of beaverhabits; `name` is what messages call it.
[[nodiscard]] ForeignHistory readForeignJSON(const ByteSource& source, const std::string& name,
                                             const ForeignHistorySettings& settings);

}  // namespace habitra
