#pragma once

#include <HabitraBackup/CSV/HabitraCSVBackupRow.h>
#include <HabitraBackup/CSV/HabitraCSVCoder.h>
#include <HabitraBackup/Document/HabitraBackupFormat.h>
#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <HabitraCore/RawValue.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// Why a backup document was made.
enum class HabitraJSONBackupType : std::uint8_t {
  manual,     ///< a person asked for it
  migrator,   ///< before the store changed its form
  scheduled,  ///< by the calendar
  automated,  ///< by a program, a conversion too
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::HabitraJSONBackupType> {
  using T = habitra::HabitraJSONBackupType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 4> rows{{
      {T::manual, "manual", "manual"},
      {T::migrator, "migrator", "migrator"},
      {T::scheduled, "scheduled", "scheduled"},
      {T::automated, "automated", "automated"},
  }};
};

namespace habitra {

/// A backup document: what export writes and import reads, in memory. Every exchange goes through it, so that how tasks
/// meet those in the store is decided in one place.
///
/// *As rows*: a task without title, or with an empty one, has none. A task without entries has one row that holds
/// identifier, title, icon and page. Otherwise each entry has a row, in the order of the log, with the bodies of all
/// notes of its day, joined by line feeds. Identifiers and periods of entries are not in them.
struct HabitraJSONBackup {
  static constexpr std::int64_t currentVersion = 1;

  std::int64_t version = currentVersion;
  qz::Moment timestamp{};
  std::vector<HabitraJSONBackupTask> tasks;
  /// The pages that have a title, an icon or an identifier of their own; their number is `displayOrder` + 1.
  std::optional<std::vector<UserProfileEntity>> pages;
  std::optional<std::vector<TaskCategoryEntity>> categories;
  std::optional<std::vector<SettingEntity>> settings;  ///< app-wide ones, without the pauses of tasks
  HabitraJSONBackupType backupType = HabitraJSONBackupType::manual;
  std::optional<std::string> backupDescription;
  std::optional<std::string> appVersion;  ///< of the program that wrote it

  friend bool operator==(const HabitraJSONBackup&, const HabitraJSONBackup&) = default;

  /// The coders of the CSV form; shared, safe from any thread.
  [[nodiscard]] static const HabitraCSVEncoder& csvEncoder();
  [[nodiscard]] static const HabitraCSVDecoder& csvDecoder();

  void forEachRow(const CSVRowHandler& onRow) const;
  [[nodiscard]] std::vector<HabitraCSVBackupRow> rows() const;

  [[nodiscard]] std::string csvString() const;
  [[nodiscard]] std::vector<std::byte> csvData() const;

  /// The document in its own form, with everything in it; HabitraJSONEncoder.h says more.
  [[nodiscard]] std::string jsonString() const;

  /// Writes the document to `to`, which is replaced as a whole or left as it was, compressed when its name ends in
  /// ".zst". Throws HabitraJSONError for a text that is too long for the document's own form, and qz::Error for what
  /// the file system refuses.
  void write(const std::filesystem::path& to, HabitraBackupFormat format) const;
};

/// The rows of one task; see HabitraJSONBackup.
void forEachRow(const HabitraJSONBackupTask& task, const CSVRowHandler& onRow);

}  // namespace habitra
