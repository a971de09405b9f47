#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace habitra::benchmarks {

/// The yardstick: a program written for this one layout against the bare C interface of the engine. It writes the same
/// rows into the same tables, with the same indexes, history and durability, as a store does, but knows nothing of
/// descriptions, identity, checksums (a constant stands in their column) or other writers.
class BareStore {
 public:
  /// Opens a store that is there. REQUIRES: nobody else writes to it.
  explicit BareStore(const std::filesystem::path& file);
  ~BareStore();
  BareStore(const BareStore&) = delete;
  BareStore& operator=(const BareStore&) = delete;

  /// Adds the entries in one durable transaction, with its history, and cuts the write-ahead log short when it has
  /// grown long. Their numbers follow the newest one.
  void save(std::span<const TaskLogEntryEntity> entries);

  /// Adds up the days and types of a task's log; what a reader of plain values does with it.
  [[nodiscard]] std::int64_t sumOfLog(ObjectID task);
  /// The same log as whole entries.
  [[nodiscard]] std::vector<TaskLogEntryEntity> log(ObjectID task);

  /// The whole number kept under a key.
  [[nodiscard]] std::optional<std::int64_t> setting(const std::string& key);

 private:
  [[nodiscard]] sqlite3_stmt* prepare(const char* sql);
  void execute(const char* sql);
  void require(bool holds);

  sqlite3* handle_ = nullptr;
  int pagesInLog_ = 0;
  std::vector<sqlite3_stmt*> statements_;
  sqlite3_stmt* begin_ = nullptr;
  sqlite3_stmt* commit_ = nullptr;
  sqlite3_stmt* newest_ = nullptr;
  sqlite3_stmt* entry_ = nullptr;
  sqlite3_stmt* change_ = nullptr;
  sqlite3_stmt* transaction_ = nullptr;
  sqlite3_stmt* meta_ = nullptr;
  sqlite3_stmt* light_ = nullptr;
  sqlite3_stmt* whole_ = nullptr;
};

}  // namespace habitra::benchmarks
