#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/Files/UnfinishedCopy.h>
#include <HabitraModel/Store/StoreContent.h>
#include <HabitraModel/Store/StoreError.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

using Kind = StoreError::Kind;

constexpr std::string_view prefix = ".habitra-copy-";

/// Removes what programs that died have left; who is at work holds a lock on its copy.
void removeLeftovers(const std::filesystem::path& folder) {
  std::error_code error;
  for (const auto& item : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = item.path().filename().string();
    if (!name.starts_with(prefix)) continue;
    // The engine's own files beside a copy are told by a name that goes on.
    const auto end = name.find('-', prefix.size());
    if (end != std::string::npos) {
      if (!std::filesystem::exists(folder / name.substr(0, end), error)) ::unlink(item.path().c_str());
      continue;
    }
    const int descriptor = ::open(item.path().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) continue;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
      for (const char* suffix : {"-journal", "-wal", "-shm", ""}) ::unlink((item.path().string() + suffix).c_str());
    ::close(descriptor);
  }
}

/// Writes what `source` sees into the empty file `file`, which is named `target` in messages.
void copyPages(Connection& source, const std::filesystem::path& file, const std::filesystem::path& target) {
  Connection copy(file.string(), target, Connection::Access::readWrite);
  copy.execute("PRAGMA journal_mode=MEMORY");  // a copy that fails is thrown away
  sqlite3_backup* backup = sqlite3_backup_init(copy.handle(), "main", source.handle(), "main");
  if (backup == nullptr) copy.fail(sqlite3_errcode(copy.handle()));
  sqlite3_backup_step(backup, -1);
  const int code = sqlite3_backup_finish(backup);
  if (code == SQLITE_OK) {
    // Who reads it later then needs no files beside it.
    copy.execute("PRAGMA journal_mode=DELETE");
    return;
  }
  const bool isOfSource =
      (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB || code == SQLITE_IOERR_READ;
  (isOfSource ? source : copy).fail(code);
}

/// Gives false, with errno, when reading or writing fails.
bool copyBytes(int from, int to) {
  std::array<char, 65536> part;
  for (;;) {
    const ssize_t count = ::read(from, part.data(), part.size());
    if (count == 0) return true;
    if (count < 0 && errno != EINTR) return false;
    for (ssize_t done = 0; done < count;) {
      const ssize_t written = ::write(to, part.data() + done, static_cast<std::size_t>(count - done));
      if (written < 0 && errno != EINTR) return false;
      done += std::max<ssize_t>(written, 0);
    }
  }
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
                       fmt::format("{} is damaged and was not copied; restore a backup of it", source.file().string()));
    throw StoreError(Kind::failed,
                     fmt::format("the copy {} came out damaged and was thrown away; check the disk", target.string()));
  }
  if (storeContent(copy) != storeContent(source))
    throw StoreError(Kind::failed, fmt::format("the copy {} is not the same as {} and was thrown away; check the disk",
                                               target.string(), source.file().string()));
}

}  // namespace

UnfinishedCopy::UnfinishedCopy(std::filesystem::path target) : target_(std::move(target)) {
  removeLeftovers(target_.parent_path());
  while (!open()) discard();
}

bool UnfinishedCopy::open() {
  std::string pattern = (target_.parent_path() / prefix).string() + "XXXXXX";
  descriptor_ = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot write", target_);
  file_ = pattern;
  struct stat status {};
  if (::flock(descriptor_, LOCK_EX) == 0 && ::fchmod(descriptor_, 0600) == 0 && ::fstat(descriptor_, &status) == 0)
    return status.st_nlink > 0;  // before it was locked, another copy may have taken it for a leftover
  const int error = errno;
  discard();
  errno = error;
  failWithErrno("cannot write", target_);
}

UnfinishedCopy::~UnfinishedCopy() { discard(); }

void UnfinishedCopy::fillWithBytesOf(const std::filesystem::path& file) {
  const int source = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (source < 0) failWithErrno("cannot read", file);
  const bool isCopied = copyBytes(source, descriptor_);
  const int error = errno;
  ::close(source);
  errno = error;
  if (!isCopied) failWithErrno("cannot write", target_);
}

void UnfinishedCopy::fillFrom(Connection& source) {
  copyPages(source, file_, target_);
  verify(source, file_, target_);
}

void UnfinishedCopy::finish() { rename(RENAME_NOREPLACE); }

void UnfinishedCopy::replace() { rename(0); }

void UnfinishedCopy::rename(unsigned flags) {
  if (::fsync(descriptor_) != 0) failWithErrno("cannot write", target_);
  int result = ::renameat2(AT_FDCWD, file_.c_str(), AT_FDCWD, target_.c_str(), flags);
  // Some file systems cannot tell by themselves that a name is taken.
  if (result != 0 && errno == EINVAL && ::access(target_.c_str(), F_OK) != 0)
    result = ::rename(file_.c_str(), target_.c_str());
  if (result != 0) failWithErrno("cannot write", target_);
  ::close(std::exchange(descriptor_, -1));
  flushFolder(target_.parent_path());
}

void UnfinishedCopy::discard() noexcept {
  if (descriptor_ < 0) return;
  for (const char* suffix : {"-journal", "-wal", "-shm", ""}) ::unlink((file_.string() + suffix).c_str());
  ::close(std::exchange(descriptor_, -1));
}

void flushFolder(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool isFlushed = descriptor >= 0 && ::fsync(descriptor) == 0;
  if (descriptor >= 0) ::close(descriptor);
  if (!isFlushed) failWithErrno("cannot write", folder);
}

}  // namespace habitra
