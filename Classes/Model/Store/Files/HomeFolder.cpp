#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/StoreError.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace habitra {

namespace {

using Kind = StoreError::Kind;

constexpr const char* otherHome = "choose another home with HABITRA_HOME";

[[noreturn]] void failForeign(const char* what, const std::filesystem::path& path) {
  throw StoreError(Kind::foreignOwner, fmt::format("{}{} belongs to another user; run Habitra as that user, or {}",
                                                   what, path.string(), otherHome));
}

/// mkdir obeys the umask, so the mode is set once more; a folder that is there keeps its own.
void makeFolders(const std::filesystem::path& folder) {
  struct stat status {};
  if (folder.empty() || ::stat(folder.c_str(), &status) == 0) return;
  makeFolders(folder.parent_path());
  if (::mkdir(folder.c_str(), 0700) == 0) {
    if (::chmod(folder.c_str(), 0700) != 0) failWithErrno("cannot protect", folder);
  } else if (errno != EEXIST) {
    failWithErrno("cannot make the folder", folder);
  }
}

}  // namespace

std::filesystem::path existingHomeFolder(const std::filesystem::path& folder) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) {
    if (errno == ENOENT) return {};
    failWithErrno("cannot look into", folder);
  }
  if (!S_ISDIR(status.st_mode))
    throw StoreError(Kind::insecurePath,
                     fmt::format("{} is not a folder; move it away, or {}", folder.string(), otherHome));
  if (status.st_uid != ::geteuid()) failForeign("the folder ", folder);
  std::error_code error;
  std::filesystem::path real = std::filesystem::canonical(folder, error);
  if (error)
    throw StoreError(Kind::failed,
                     fmt::format("cannot look into {}: {}; check the path", folder.string(), error.message()));
  return real;
}

std::filesystem::path makeHomeFolder(const std::filesystem::path& folder) {
  makeFolders(std::filesystem::absolute(folder).lexically_normal());
  const std::filesystem::path real = existingHomeFolder(folder);
  if (real.empty())
    throw StoreError(Kind::insecurePath,
                     fmt::format("{} leads nowhere; make what it leads to, or {}", folder.string(), otherHome));
  return real;
}

void makePrivateFolder(const std::filesystem::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0) {
    if (::chmod(folder.c_str(), 0700) != 0) failWithErrno("cannot protect", folder);
    return;
  }
  if (errno != EEXIST) failWithErrno("cannot make the folder", folder);
  struct stat status {};
  if (::lstat(folder.c_str(), &status) != 0) failWithErrno("cannot look at", folder);
  if (!S_ISDIR(status.st_mode))
    throw StoreError(Kind::insecurePath,
                     fmt::format("{} must be a plain folder and is not; move it away", folder.string()));
  if (status.st_uid != ::geteuid()) failForeign("the folder ", folder);
}

bool isPrivateFile(const std::filesystem::path& file) {
  struct stat status {};
  if (::lstat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return false;
    failWithErrno("cannot look at", file);
  }
  if (S_ISDIR(status.st_mode))
    throw StoreError(Kind::notAStore,
                     fmt::format("{} is a folder, not a Habitra store; move it away, or {}", file.string(), otherHome));
  if (S_ISLNK(status.st_mode))
    throw StoreError(
        Kind::insecurePath,
        fmt::format("{} is a link, and links are not followed here; put the file itself there", file.string()));
  if (!S_ISREG(status.st_mode))
    throw StoreError(Kind::notAStore,
                     fmt::format("{} is not a plain file; move it away, or {}", file.string(), otherHome));
  if (status.st_uid != ::geteuid()) failForeign("", file);
  return true;
}

void makePrivateFile(const std::filesystem::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    if (errno == EEXIST) return;
    failWithErrno("cannot make", file);
  }
  const bool isProtected = ::fchmod(descriptor, 0600) == 0;
  ::close(descriptor);
  if (!isProtected) failWithErrno("cannot protect", file);
}

bool isLinked(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

void tightenFile(const std::filesystem::path& file) noexcept {
  struct stat status {};
  if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) return;
  const mode_t mode = status.st_mode & 07777;
  // A file system that knows no modes refuses, or gives the file what it always does.
  if (const mode_t own = mode & 0600; own != mode) (void)::fchmodat(AT_FDCWD, file.c_str(), own, AT_SYMLINK_NOFOLLOW);
}

}  // namespace habitra
