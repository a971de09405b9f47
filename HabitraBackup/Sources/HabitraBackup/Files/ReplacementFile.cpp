#include <HabitraBackup/Files/ReplacementFile.h>
#include <QZKit/Error.h>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <utility>

namespace habitra {

namespace {

constexpr mode_t everyone = 0666;  // less what the process's mask takes away, as for any new file
constexpr mode_t permissionBits = 0777;

std::filesystem::path withLinksFollowed(const std::filesystem::path& path) {
  std::error_code error;
  auto result = std::filesystem::weakly_canonical(path, error);
  return error ? path : result;
}

}  // namespace

ReplacementFile::ReplacementFile(const std::filesystem::path& target, Links links)
    : name_(target), target_(links == Links::followed ? withLinksFollowed(target) : target) {
  struct stat status {};
  const bool exists =
      (links == Links::followed ? ::stat(target_.c_str(), &status) : ::lstat(target_.c_str(), &status)) == 0;
  if (exists && S_ISLNK(status.st_mode)) {
    openBeside();
    return;
  }
  if (exists && S_ISDIR(status.st_mode)) fail("cannot be written", EISDIR);
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) fail("cannot be written", errno);
    return;
  }
  openBeside();
  // Some file systems know no modes; the file is then as open as they make all files.
  if (exists) static_cast<void>(::fchmod(descriptor_, status.st_mode & permissionBits));
}

ReplacementFile::~ReplacementFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void ReplacementFile::openBeside() {
  // A process that was killed may have left a file of that name and had our number; then the next name is free.
  for (int attempt = 0; descriptor_ < 0; ++attempt) {
    const std::string name = fmt::format(".{}.{}-{}", target_.filename().string(), ::getpid(), attempt);
    temporary_ = (target_.parent_path() / name).string();
    descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everyone);
    if (descriptor_ < 0 && errno != EEXIST) fail("cannot be written", errno);
  }
}

void ReplacementFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("cannot be written", errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void ReplacementFile::replace(const Check& check) {
  if (!temporary_.empty() && ::fsync(descriptor_) != 0) fail("cannot be flushed", errno);
  if (::close(std::exchange(descriptor_, -1)) != 0) fail("cannot be written", errno);
  if (temporary_.empty()) return;
  if (check) check(temporary_);
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail("cannot be replaced", errno);
  temporary_.clear();
  // The new name is on the disk when its folder is; a file system that cannot flush a folder keeps it its own way.
  const auto folder = target_.parent_path().empty() ? std::filesystem::path(".") : target_.parent_path();
  if (const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); descriptor >= 0) {
    ::fsync(descriptor);
    ::close(descriptor);
  }
}

void ReplacementFile::fail(std::string_view step, int errorNumber) const {
  throw qz::Error(fmt::format("{} {}: {}", name_.string(), step, std::strerror(errorNumber)));
}

}  // namespace habitra
