#include <gtest/gtest.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraBackup/Files/ReplacementFile.h>
#include <HabitraBackup/HabitraBackup.h>
#include <Support/TemporaryFolder.h>
#include <fstream>
#include <sstream>
#include <string>

namespace habitra {
namespace {

namespace fs = std::filesystem;

const qz::Moment now{};

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void put(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

std::size_t filesIn(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

std::string refusal(const fs::path& path) {
  try {
    static_cast<void>(HabitraBackup::loadCsv(path, now));
  } catch (const qz::Error& error) {
    return error.what();
  }
  return "accepted";
}

HabitraJSONBackup oneTask() {
  HabitraJSONBackup document;
  document.tasks.emplace_back().title = "A";
  return document;
}

TEST(BackupFileTests, FilesThatCannotBeRead) {
  const TemporaryFolder folder;
  const std::string at = folder.path().string();
  EXPECT_EQ(refusal(folder / "none.csv"), at + "/none.csv: No such file or directory");
  EXPECT_EQ(refusal(folder.path()), at + ": Is a directory");
  put(folder / "binary.csv", std::string("\x7F"
                                         "ELF\x02\x01\x01\0\0",
                                         9));
  EXPECT_EQ(refusal(folder / "binary.csv"),
            at + "/binary.csv: line 1, column 1: byte 0x00 is not text (UTF-8 expected)");
  put(folder / "wrong\n.csv", "title,page\nA,first\n");
  EXPECT_EQ(refusal(folder / "wrong\n.csv"),
            at + "/wrong\\n.csv: line 2, page: \"first\" is not a page number from 1 to 32768");

  const auto kindOf = [](const fs::path& path) {
    try {
      static_cast<void>(HabitraBackup::loadCsv(path, now));
    } catch (const TaskDataExchangeError& error) {
      return error.kind();
    }
    return TaskDataExchangeError::importerUnavailable;
  };
  EXPECT_EQ(kindOf(""), TaskDataExchangeError::noUrl);
  EXPECT_EQ(kindOf("https://example.org/walk.csv"), TaskDataExchangeError::notLocalFile);
}

TEST(BackupFileTests, WhatIsWrittenIsReadAndReplacesWhatWasThere) {
  const TemporaryFolder folder;
  const fs::path target = folder / "walk.csv";
  put(target, "old");
  fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("walk.csv", folder / "link.csv");
  oneTask().write(folder / "link.csv", HabitraBackupFormat::csv);
  EXPECT_TRUE(fs::is_symlink(folder / "link.csv"));
  EXPECT_EQ(contents(target), oneTask().csvString());
  EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(HabitraBackup::loadCsv(target, now).tasks.at(0).title, "A");
  EXPECT_EQ(filesIn(folder.path()), 2U);
}

TEST(BackupFileTests, AFailedWriteLeavesNothingBehind) {
  const TemporaryFolder folder;
  const fs::path target = folder / "walk.csv";
  put(target, "old");
  {
    ReplacementFile file(target);
    file.write("new");
  }
  EXPECT_EQ(contents(target), "old") << "not replaced";
  EXPECT_EQ(filesIn(folder.path()), 1U);

  EXPECT_THROW(oneTask().write(folder.path(), HabitraBackupFormat::csv), qz::Error) << "a folder";
  EXPECT_THROW(oneTask().write(folder / "none/walk.csv", HabitraBackupFormat::csv), qz::Error) << "no such folder";
  EXPECT_THROW(oneTask().write("/dev/full", HabitraBackupFormat::csv), qz::Error) << "a full disk";
  EXPECT_EQ(contents(target), "old");
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

}  // namespace
}  // namespace habitra
