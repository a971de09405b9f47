#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace habitra {

class StoreContext;

/// The backups that are made by themselves, one a day on which something has changed: whole backup documents,
/// compressed, "Backups/2024-01-31.habitra.zst" in the home, the owner's alone. Older ones go by BackupRotation, but
/// only once a newer one has been written, read back and found to say the same. Whatever else lies in the folder is
/// left alone.
///
/// Belongs to one thread. Other processes may make one at the same time: each gives the name to a file of its own that
/// it has checked.
class AutomaticBackups {
 public:
  static constexpr const char* folderName = "Backups";
  /// The key of the standard defaults under which is kept of which state of the store the newest backup was made
  /// (HistoryToken::text()).
  static constexpr const char* newestKey = "backup.newest";

  /// A backup that is there.
  struct Backup {
    qz::YYYYMMDD day;
    std::filesystem::path file;

    friend bool operator==(const Backup&, const Backup&) = default;
  };

  /// REQUIRES: `standardDefaults` outlives this object.
  AutomaticBackups(const std::filesystem::path& home, KeyValueDefaults& standardDefaults, std::string appVersion);

  /// Those that are there, newest first. Throws qz::Error when the folder cannot be read.
  [[nodiscard]] std::vector<Backup> all() const;

  /// Whether today has none and the store has changed since the newest one.
  [[nodiscard]] bool isDue(StoreContext& context, qz::YYYYMMDD today) const;

  /// Makes that of today, checks it and lets go of those that need not be kept. Throws qz::Error when it cannot be
  /// written or does not read back as what was written; none that was there has gone then. REQUIRES: `context` is
  /// nobody else's: what it reads it forgets.
  void make(StoreContext& context, qz::YYYYMMDD today, qz::Moment now);

 private:
  [[nodiscard]] std::filesystem::path fileOf(qz::YYYYMMDD day) const;
  void removeOutdated(qz::YYYYMMDD today) const;

  const std::filesystem::path folder_;
  KeyValueDefaults& defaults_;
  const std::string appVersion_;
};

}  // namespace habitra
