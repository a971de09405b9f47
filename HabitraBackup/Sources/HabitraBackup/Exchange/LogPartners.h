#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace habitra {

/// What of a stored entry decides whether it is the same as one of a document.
struct LogCandidate {
  LogKey key;
  std::optional<qz::UniqueID> uniqueId;
  std::optional<qz::Moment> createdTimestamp;
  std::int32_t periodFrom = 0;  ///< 0: no period is stored
  std::int32_t periodTo = 0;
  std::int16_t entryType = 0;
  double progress = 0.0;
};

/// Finds for each entry of a document the stored entry that it is: the one with its identifier; else one of the same
/// day and type, made in the same second; else, where one of the two has no moment of making, one of the same day and
/// type. Each stored entry is the partner of one at most, so that two equal entries need two partners.
class LogPartners {
 public:
  LogPartners(std::span<const HabitraJSONBackupTaskEntry> wanted, std::span<const LogCandidate> stored);

  /// The place of the partner of the document's entry at `index` among the stored ones.
  [[nodiscard]] std::optional<std::size_t> ofWanted(std::size_t index) const { return partnerOf_[index]; }
  /// Whether the stored entry at `index` is the partner of one of the document.
  [[nodiscard]] bool isTaken(std::size_t index) const { return isTaken_[index]; }

 private:
  template <typename WantedKey, typename StoredKey>
  void pair(WantedKey wantedKey, StoredKey storedKey);

  std::span<const HabitraJSONBackupTaskEntry> wanted_;
  std::span<const LogCandidate> stored_;
  std::vector<std::optional<std::size_t>> partnerOf_;
  std::vector<bool> isTaken_;
};

}  // namespace habitra
