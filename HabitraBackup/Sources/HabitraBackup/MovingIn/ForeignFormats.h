#pragma once

#include <HabitraBackup/MovingIn/ForeignFiles.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>

#include <filesystem>

/// The readers of the known formats. Each throws qz::Error or CSVError as readForeignHistory says.
namespace habitra {

class ForeignDatabase;

/// The CSV export of Loop Habit Tracker, unpacked.
[[nodiscard]] ForeignHistory readLoopCSV(const ForeignFiles& files, const ForeignHistorySettings& settings);
/// The two text files of harsh.
[[nodiscard]] ForeignHistory readHarsh(const ForeignFiles& files, const ForeignHistorySettings& settings);
/// The JSON file of beaverhabits.
[[nodiscard]] ForeignHistory readBeaver(const std::filesystem::path& file, const ForeignHistorySettings& settings);

/// A SQLite database: that of Loop Habit Tracker or of Tickmate, by its tables.
[[nodiscard]] ForeignHistory readForeignDatabase(const std::filesystem::path& file,
                                                 const ForeignHistorySettings& settings);
[[nodiscard]] ForeignHistory readLoopDatabase(const ForeignDatabase& database, const ForeignHistorySettings& settings);
[[nodiscard]] ForeignHistory readTickmate(const ForeignDatabase& database, const ForeignHistorySettings& settings);

}  // namespace habitra
