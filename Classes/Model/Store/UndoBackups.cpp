#include <HabitraModel/Store/Connection.h>
#include <HabitraModel/Store/HomeFolder.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreCopy.h>
#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/Store/StoreFile.h>
#include <HabitraModel/Store/UndoBackups.h>

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace habitra {

namespace {

constexpr std::string_view prefix = "before-";
constexpr std::string_view suffix = ".sqlite";

bool isOf(const std::filesystem::path& file, const std::string& storeIdentifier) {
  try {
    if (!isPrivateFile(file)) return false;
    Connection connection(StoreFile::immutableAddress(file), file, Connection::Access::readOnly);
    Statement meta(connection, "SELECT storeIdentifier FROM habitra_meta");
    return meta.step() && meta.text(0) == storeIdentifier;
  } catch (const StoreError&) {
    return false;  // whatever it is, it is not ours to remove
  }
}

}  // namespace

std::filesystem::path undoBackupFolder(const std::filesystem::path& store) { return store.parent_path() / "Backups"; }

UndoBackup::~UndoBackup() {
  if (!name_.empty()) removeUndoBackup(store_.file(), name_);
}

std::string UndoBackup::make(std::int64_t sequence) {
  const std::filesystem::path folder = undoBackupFolder(store_.file());
  std::string name = fmt::format("{}{}{}", prefix, sequence, suffix);
  for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(folder / name)); ++number)
    name = fmt::format("{}{}-{}{}", prefix, sequence, number, suffix);
  copyStore(store_.file(), folder / name);
  name_ = name;
  return name;
}

std::vector<std::string> undoBackups(const std::filesystem::path& store, const std::string& storeIdentifier) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(undoBackupFolder(store), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with(prefix) && name.ends_with(suffix) && isOf(entry->path(), storeIdentifier))
      names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool hasUndoBackup(const std::filesystem::path& store, const std::string& name) {
  std::error_code error;
  return std::filesystem::path(name).filename() == name && name.starts_with(prefix) && name.ends_with(suffix) &&
         std::filesystem::is_regular_file(std::filesystem::symlink_status(undoBackupFolder(store) / name, error));
}

bool removeUndoBackup(const std::filesystem::path& store, const std::string& name) noexcept {
  std::error_code error;
  std::filesystem::remove(undoBackupFolder(store) / name, error);
  return !error;
}

}  // namespace habitra
