#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace habitra {

/// A moment of the tests: noon of 15 January 2024, UTC.
inline constexpr qz::Moment testMoment =
    std::chrono::sys_days(std::chrono::year(2024) / 1 / 15) + std::chrono::hours(12);

/// What a foreign program does to the file: rows as text, columns separated by "|".
inline std::vector<std::string> runSQL(const std::filesystem::path& file, const std::string& sql) {
  sqlite3* handle = nullptr;
  EXPECT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
  std::vector<std::string> rows;
  const auto addRow = [](void* result, int count, char** values, char**) {
    std::string row;
    for (int i = 0; i < count; ++i) row += (i == 0 ? "" : "|") + std::string(values[i] == nullptr ? "" : values[i]);
    static_cast<std::vector<std::string>*>(result)->push_back(row);
    return 0;
  };
  char* message = nullptr;
  EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), addRow, &rows, &message), SQLITE_OK) << sql << ": " << message;
  sqlite3_free(message);
  sqlite3_close(handle);
  return rows;
}

/// A store in a folder of its own. Each context stands for a program of its own, unless it is given the store of
/// another.
class StoreTest : public testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "home" / "Habitra-Local.sqlite"; }
  [[nodiscard]] std::shared_ptr<Store> openStore() const { return Store::open(file(), clock_); }
  [[nodiscard]] std::unique_ptr<StoreContext> open() const { return std::make_unique<StoreContext>(openStore()); }

  static TaskEntity titled(const std::string& title) {
    TaskEntity task;
    task.title = title;
    return task;
  }
  static TaskLogEntryEntity entryOn(ObjectID task, std::int32_t day) {
    TaskLogEntryEntity entry;
    entry.task = task;
    entry.entryDate = entry.entryPeriodFrom = entry.entryPeriodTo = day;
    entry.entryPeriodType = "d";
    entry.entryType = 1;
    return entry;
  }
  /// A store with one task; gives its number.
  ObjectID makeTask() const {
    const auto context = open();
    TaskEntity& task = context->insert(titled("Walk"));
    context->save({});
    return task.objectID;
  }

  TemporaryFolder folder_;
  std::shared_ptr<SettableClock> clock_ = std::make_shared<SettableClock>(testMoment);
};

/// The kind of the StoreError that `step` throws.
template <typename Step>
std::optional<StoreError::Kind> errorKind(Step&& step) {
  try {
    step();
  } catch (const StoreError& error) {
    return error.kind();
  }
  return std::nullopt;
}

}  // namespace habitra
