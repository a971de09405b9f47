#include <HabitraModel/Store/Connection.h>
#include <HabitraModel/Store/HomeFolder.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContent.h>
#include <HabitraModel/Store/StoreCopy.h>
#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/Store/StoreFile.h>
#include <HabitraModel/Store/SystemFailure.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {

namespace {

using Kind = StoreError::Kind;

constexpr std::string_view unfinishedPrefix = ".habitra-copy-";

void flushFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool isFlushed = descriptor >= 0 && ::fsync(descriptor) == 0;
  if (descriptor >= 0) ::close(descriptor);
  if (!isFlushed) failWithErrno("cannot write", folder);
}

/// Removes the copies that programs which died have left unfinished; who is at work holds a lock on its copy.
void removeUnfinishedCopies(const std::filesystem::path& folder) {
  std::error_code error;
  for (const auto& item : std::filesystem::directory_iterator(folder, error)) {
    if (!item.path().filename().string().starts_with(unfinishedPrefix)) continue;
    const int descriptor = ::open(item.path().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) continue;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) ::unlink(item.path().c_str());
    ::close(descriptor);
  }
}

/// A file on its way to being a copy; goes when it does not get there.
class UnfinishedCopy {
 public:
  explicit UnfinishedCopy(std::filesystem::path target) : target_(std::move(target)) {
    std::string pattern = (target_.parent_path() / unfinishedPrefix).string() + "XXXXXX";
    descriptor_ = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor_ < 0) failWithErrno("cannot write", target_);
    file_ = pattern;
    struct stat status {};
    if (::flock(descriptor_, LOCK_EX) != 0 || ::fchmod(descriptor_, 0600) != 0 || ::fstat(descriptor_, &status) != 0 ||
        status.st_nlink == 0) {
      discard();
      failWithErrno("cannot write", target_);
    }
  }
  ~UnfinishedCopy() { discard(); }
  UnfinishedCopy(const UnfinishedCopy&) = delete;
  UnfinishedCopy& operator=(const UnfinishedCopy&) = delete;

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }

  /// Gives it its name, for good. REQUIRES: no connection is open on it.
  void finish() {
    if (::fsync(descriptor_) != 0) failWithErrno("cannot write", target_);
    int result = ::renameat2(AT_FDCWD, file_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE);
    // Some file systems know no such renaming; that nothing was there has been asked before.
    if (result != 0 && errno == EINVAL) result = ::rename(file_.c_str(), target_.c_str());
    if (result != 0) failWithErrno("cannot write", target_);
    file_ = target_;
    flushFolder(target_.parent_path());
    ::close(std::exchange(descriptor_, -1));
  }

 private:
  void discard() noexcept {
    if (descriptor_ < 0) return;
    ::unlink(file_.c_str());
    ::close(std::exchange(descriptor_, -1));
  }

  std::filesystem::path target_;
  std::filesystem::path file_;
  int descriptor_ = -1;
};

/// Writes what `source` sees into the empty file `file`, which is named `target` in messages.
void copyPages(Connection& source, const std::filesystem::path& file, const std::filesystem::path& target) {
  Connection copy(file.string(), target, Connection::Access::readWrite);
  copy.execute("PRAGMA journal_mode=MEMORY");  // a copy that fails is thrown away
  sqlite3_backup* backup = sqlite3_backup_init(copy.handle(), "main", source.handle(), "main");
  if (backup == nullptr) copy.fail(sqlite3_errcode(copy.handle()));
  sqlite3_backup_step(backup, -1);
  const int code = sqlite3_backup_finish(backup);
  if (code == SQLITE_OK) return;
  const bool isOfSource =
      (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB || code == SQLITE_IOERR_READ;
  (isOfSource ? source : copy).fail(code);
}

bool isWhole(Connection& connection) {
  Statement check(connection, "PRAGMA integrity_check(1)");
  return check.step() && check.text(0) == "ok";
}

void verify(Connection& source, const std::filesystem::path& file, const std::filesystem::path& target) {
  Connection copy(StoreFile::immutableAddress(file), target, Connection::Access::readOnly);
  if (!isWhole(copy)) {
    if (!isWhole(source))
      throw StoreError(Kind::damaged,
                       fmt::format("{} is damaged and was not copied; restore a backup", source.file().string()));
    throw StoreError(Kind::failed,
                     fmt::format("the copy {} came out damaged and was thrown away; check the disk", target.string()));
  }
  if (storeContent(copy) != storeContent(source))
    throw StoreError(Kind::failed, fmt::format("the copy {} is not the same as {} and was thrown away; check the disk",
                                               target.string(), source.file().string()));
}

}  // namespace

void copyStore(const std::filesystem::path& from, const std::filesystem::path& to) {
  const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(from).parent_path());
  const std::filesystem::path file = home / from.filename();
  if (home.empty() || !isPrivateFile(file))
    throw StoreError(Kind::failed, fmt::format("there is no store at {} to copy", from.string()));
  Connection source(StoreFile::at(file).address, file, Connection::Access::readOnly);
  // One view for the copy and for what it is compared with; reading begins it.
  source.execute("BEGIN");
  if (source.integer("PRAGMA application_id") != Store::applicationID)
    throw StoreError(Kind::notAStore, fmt::format("{} is not a Habitra store and was not copied", file.string()));

  const std::filesystem::path folder = makeHomeFolder(std::filesystem::absolute(to).parent_path());
  const std::filesystem::path target = folder / to.filename();
  struct stat status {};
  if (::lstat(target.c_str(), &status) == 0)
    throw StoreError(Kind::failed,
                     fmt::format("{} is there already; choose another name for the copy", target.string()));
  removeUnfinishedCopies(folder);
  UnfinishedCopy copy(target);
  copyPages(source, copy.file(), target);
  verify(source, copy.file(), target);
  copy.finish();
}

}  // namespace habitra
