#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>

#include <filesystem>
#include <string_view>

/// A history to look at and to try import with.
namespace habitra {

inline constexpr std::string_view sampleFileName = "habitra-sample.csv";

/// The thirty days before `today` of five habits, with entries of every kind that people and devices make: done, done
/// in parts, by a device and by a timer, skipped, missed and allowed to be missed.
[[nodiscard]] HabitraJSONBackup sampleHistory(qz::YYYYMMDD today, const qz::TimeZone& timeZone);

/// Writes it as CSV to "habitra-sample.csv" in the folder, or in that for temporary files where none is named, and
/// gives the file's path; a link of that name is replaced. Throws qz::Error where the folder is none ("Unable to
/// determine storage location" for that of temporary files), or for what the file system refuses.
std::filesystem::path writeSampleCsv(const std::filesystem::path& folder, qz::YYYYMMDD today,
                                     const qz::TimeZone& timeZone);

}  // namespace habitra
