#include <HabitraModel/Store/Files/StoreCopy.h>
#include <HabitraModel/Store/Files/UndoBackups.h>
#include <HabitraModel/Store/Store.h>

#include <fmt/format.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

constexpr std::string_view prefix = "before-";
constexpr std::string_view suffix = ".sqlite";

/// How the names of the copies of one store end: several stores of a home count their transactions alike. Identifiers
/// begin with when they were made, and end by chance.
std::string endingOf(const std::string& storeIdentifier) {
  constexpr std::size_t length = 8;
  return fmt::format("-{}{}", storeIdentifier.substr(storeIdentifier.size() - std::min(length, storeIdentifier.size())),
                     suffix);
}

}  // namespace

std::filesystem::path undoBackupFolder(const std::filesystem::path& store) { return store.parent_path() / "Backups"; }

UndoBackup::~UndoBackup() {
  if (!name_.empty()) removeUndoBackup(store_.file(), name_);
}

std::string UndoBackup::make(std::int64_t sequence, const std::string& storeIdentifier) {
  const std::string name = fmt::format("{}{}{}", prefix, sequence, endingOf(storeIdentifier));
  // One that is there is of a command that was never committed.
  removeUndoBackup(store_.file(), name);
  copyStore(store_.file(), undoBackupFolder(store_.file()) / name);
  name_ = name;
  return name;
}

std::set<std::string> undoBackups(const std::filesystem::path& store, const std::string& storeIdentifier) {
  std::set<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(undoBackupFolder(store), error), end; !error && entry != end;
       entry.increment(error)) {
    std::string name = entry->path().filename().string();
    if (name.starts_with(prefix) && name.ends_with(endingOf(storeIdentifier))) names.insert(std::move(name));
  }
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
