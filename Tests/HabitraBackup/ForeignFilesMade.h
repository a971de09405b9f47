#pragma once

#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <zip.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

/// Small files in the forms of other trackers, made by the tests that read them.
using Texts = std::vector<std::pair<std::string, std::string>>;

inline void writeText(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

inline std::filesystem::path makeFolder(const std::filesystem::path& folder, const Texts& texts) {
  std::filesystem::create_directories(folder);
  for (const auto& [name, text] : texts) writeText(folder / name, text);
  return folder;
}

inline std::filesystem::path makeZip(const std::filesystem::path& file, const Texts& texts) {
  zip_t* archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
  for (const auto& [name, text] : texts) {
    zip_source_t* source = zip_source_buffer(archive, text.data(), text.size(), 0);
    EXPECT_GE(zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8), 0);
  }
  EXPECT_EQ(zip_close(archive), 0);
  return file;
}

inline std::filesystem::path makeDatabase(const std::filesystem::path& file, const std::string& script) {
  sqlite3* database = nullptr;
  EXPECT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  char* problem = nullptr;
  EXPECT_EQ(sqlite3_exec(database, script.c_str(), nullptr, nullptr, &problem), SQLITE_OK) << problem;
  sqlite3_free(problem);
  sqlite3_close(database);
  return file;
}
