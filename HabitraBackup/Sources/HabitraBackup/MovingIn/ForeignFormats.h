#pragma once

#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/MovingIn/ForeignFiles.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>

#include <string>
#include <string_view>

/// The readers of the known formats. Each throws qz::Error or CSVError as ForeignHistory.h says.
namespace habitra {

class ForeignDatabase;

/// The CSV export of Loop Habit Tracker, unpacked.
[[nodiscard]] ForeignHistory readLoopCSV(const ForeignFiles& files, const ForeignHistorySettings& settings,
                                         const ExchangeProgress& progress);
/// Whether the first line of a text is that of a table of this export.
[[nodiscard]] bool isTableOfLoop(std::string_view header);
/// The two text files of harsh.
[[nodiscard]] ForeignHistory readHarsh(const ForeignFiles& files, const ForeignHistorySettings& settings,
                                       const ExchangeProgress& progress);
/// The JSON of beaverhabits; `name` is what messages call it.
[[nodiscard]] ForeignHistory readBeaver(const std::string& text, const std::string& name,
                                        const ForeignHistorySettings& settings);
[[nodiscard]] ForeignHistory readLoopDatabase(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                                              const ExchangeProgress& progress);
[[nodiscard]] ForeignHistory readTickmate(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                                          const ExchangeProgress& progress);

}  // namespace habitra
