#pragma once

#include <HabitraModel/CoreDataMigrator.h>
#include <HabitraModel/Store/StoreVerification.h>
#include <Support/ChildProcess.h>
#include <Support/FolderContent.h>

#include <csignal>
#include <fstream>

#include "StoreFixture.h"

namespace habitra {

/// A home with a store that a program of the first version has written: three tasks with 21 entries.
class MigrationTest : public StoreTest {
 protected:
  MigrationTest() { std::filesystem::create_directories(home()); }

  [[nodiscard]] std::filesystem::path home() const { return folder_ / "home"; }
  [[nodiscard]] std::filesystem::path backups() const { return home() / "Backups"; }

  static void putOldStore(const std::filesystem::path& to) {
    std::filesystem::copy_file(std::filesystem::path(DATA_FOLDER) / "version-1.sqlite", to,
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(to, std::filesystem::perms(0600));
  }

  [[nodiscard]] CoreDataMigrator migrator(std::function<void(std::string_view)> beforeStep = {}) const {
    return CoreDataMigrator(clock_, {.patience = std::chrono::milliseconds(0), .beforeStep = std::move(beforeStep)});
  }

  /// How many steps an operation has.
  template <typename Operation>
  [[nodiscard]] int countSteps(Operation&& operation) const {
    int steps = 0;
    auto counting = migrator([&steps](std::string_view) { ++steps; });
    operation(counting);
    return steps;
  }

  /// Runs an operation in a process that is killed before the step with that number.
  template <typename Operation>
  void killBefore(int step, Operation&& operation) const {
    ChildProcess child([&](const ChildProcess::Talk&) {
      int steps = 0;
      auto killed = migrator([&steps, step](std::string_view) {
        if (steps++ == step) ::raise(SIGKILL);
      });
      operation(killed);
    });
    EXPECT_FALSE(child.end()) << "step " << step << " was not reached";
  }

  static std::string version(const std::filesystem::path& file) { return runSQL(file, "PRAGMA user_version").front(); }

  /// The store is sound and holds what the old one held.
  static void expectAllRows(const std::filesystem::path& file) {
    EXPECT_EQ(runSQL(file, "PRAGMA integrity_check; PRAGMA foreign_key_check"), std::vector<std::string>{"ok"});
    EXPECT_EQ(
        runSQL(file,
               "SELECT title FROM TaskEntity ORDER BY objectID; SELECT count(*) FROM TaskLogEntryEntity;"
               "SELECT count(*) FROM UserProfileEntity; SELECT count(*) FROM TaskTemporalDataEntity;"
               "SELECT count(*) FROM habitra_transaction"),
        (std::vector<std::string>{"Walk", "Stretch, well", "Meditate \xE2\x80\x94 fr\xC3\xBCh", "21", "2", "3", "10"}));
  }

  [[nodiscard]] static std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    if (!std::filesystem::exists(folder)) return files;
    for (const auto& item : std::filesystem::directory_iterator(folder)) files.push_back(item.path());
    std::sort(files.begin(), files.end());
    return files;
  }

  /// The message of the StoreError that a step throws: one line that says what to do.
  template <typename Step>
  static std::string refusal(StoreError::Kind kind, Step&& step) {
    try {
      step();
    } catch (const StoreError& error) {
      const std::string message = error.what();
      EXPECT_EQ(error.kind(), kind) << message;
      EXPECT_EQ(message.find('\n'), std::string::npos) << message;
      EXPECT_NE(message.find("; "), std::string::npos) << message;
      return message;
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
  }
};

}  // namespace habitra
