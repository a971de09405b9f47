#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/StoreCopy.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/UnfinishedCopy.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string>

namespace habitra {

namespace {

using Kind = StoreError::Kind;

bool isThere(const std::filesystem::path& file) {
  struct stat status {};
  return ::lstat(file.c_str(), &status) == 0;
}

/// The path of a copy to be, whose folder is made when it is missing.
std::filesystem::path targetOf(const std::filesystem::path& to, const std::filesystem::path& home) {
  const std::filesystem::path wanted = std::filesystem::absolute(to).lexically_normal();
  // Inside the home no link is followed.
  if (existingHomeFolder(wanted.parent_path().parent_path()) == home) makePrivateFolder(wanted.parent_path());
  const std::filesystem::path target = makeHomeFolder(wanted.parent_path()) / wanted.filename();
  if (!isFreeForCopy(target))
    throw StoreError(Kind::failed, fmt::format("{} is there already, or a log of that name; move it away, or choose "
                                               "another name for the copy",
                                               target.string()));
  return target;
}

}  // namespace

void copyStore(const std::filesystem::path& from, const std::filesystem::path& to) {
  const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(from).parent_path());
  const std::filesystem::path file = home / from.filename();
  if (home.empty() || !isPrivateFile(file))
    throw StoreError(Kind::failed, fmt::format("there is no store at {} to copy; check the path", from.string()));
  Connection source(StoreFile::at(file).address, file, Connection::Access::readOnly);
  // One view for the copy and for what it is compared with; reading begins it.
  source.execute("BEGIN");
  if (source.integer("PRAGMA application_id") != Store::applicationID)
    throw StoreError(Kind::notAStore,
                     fmt::format("{} is not a Habitra store and was not copied; check the path", file.string()));
  UnfinishedCopy copy(targetOf(to, home));
  copy.fillFrom(source);
  copy.finish();
}

bool isFreeForCopy(const std::filesystem::path& file) {
  return std::ranges::none_of(std::array{"", "-wal", "-journal"},
                              [&file](const char* suffix) { return isThere(file.string() + suffix); });
}

std::filesystem::path backupFolder(const std::filesystem::path& home) {
  const std::filesystem::path folder = home / "Backups";
  makePrivateFolder(folder);
  return folder;
}

}  // namespace habitra
