#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <HabitraBackup/Document/HabitraJSONRemarks.h>
#include <HabitraBackup/Document/JSONStream.h>

#include <nlohmann/json.hpp>

namespace habitra {

/// An entry as it is read; its details are apart, so that entries can share them.
struct DocumentEntry {
  HabitraJSONBackupTaskEntry entry;
  HabitraJSONBackupTaskEntryDetails details;

  /// Throws HabitraJSONError for anything that is no entry.
  [[nodiscard]] static DocumentEntry from(const nlohmann::json& json, const JSONPlace& place,
                                          HabitraJSONRemarks& remarks);
};

}  // namespace habitra
