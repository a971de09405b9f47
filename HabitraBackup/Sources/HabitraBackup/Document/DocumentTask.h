#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <HabitraBackup/Document/HabitraJSONRemarks.h>
#include <HabitraBackup/Document/JSONStream.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// Puts a task of a backup document together from its members, as they come. What a member cannot hold throws
/// HabitraJSONError.
class DocumentTask {
 public:
  /// Whether a task has a list under this key.
  [[nodiscard]] static bool isList(std::string_view key);
  /// Whether it has something else under it.
  [[nodiscard]] static bool isMember(std::string_view key);

  /// One of its lists begins.
  void begin(std::string_view list);
  /// An element of a list. REQUIRES: it has begun.
  void add(std::string_view list, const nlohmann::json& json, const JSONPlace& place, HabitraJSONRemarks& remarks);
  /// A member that is no list. Gives false when a task has none of that key.
  bool set(std::string_view key, const nlohmann::json& json, const JSONPlace& place, HabitraJSONRemarks& remarks);

  /// REQUIRES: called once, when there is no more to come.
  [[nodiscard]] HabitraJSONBackupTask finished() &&;

 private:
  [[nodiscard]] HabitraJSONBackupTaskEntry entry(const nlohmann::json& json, const JSONPlace& place,
                                                 HabitraJSONRemarks& remarks);

  HabitraJSONBackupTask task_;
  HabitraJSONBackupTaskRecord record_;
  bool hasSettings_ = false;
  bool hasFrequency_ = false;
  std::shared_ptr<const HabitraJSONBackupTaskEntryDetails> details_;  // of the newest entry that has some
};

}  // namespace habitra
