#include <HabitraModel/Settings/DefaultsFile.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/FileDescriptor.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <thread>
#include <utility>

namespace habitra {
namespace {

using Kind = StoreError::Kind;
using namespace std::chrono_literals;

/// Throws the StoreError for the present errno. `what` as in "cannot make".
[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
  const int error = errno;
  if (error == ELOOP)
    throw StoreError(Kind::insecurePath, fmt::format("{} is a link; put the file itself there", path.string()));
  if (error == EACCES || error == EPERM)
    throw StoreError(Kind::readOnly,
                     fmt::format("{} {}: {}; give yourself the right to it, or choose another home with HABITRA_HOME",
                                 what, path.string(), std::generic_category().message(error)));
  failWithErrno(what, path);
}

void requireOwnPlainFile(int descriptor, const std::filesystem::path& path) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) fail("cannot look at", path);
  if (!S_ISREG(status.st_mode))
    throw StoreError(Kind::insecurePath, fmt::format("{} is not a plain file; move it away", path.string()));
  if (status.st_uid != ::geteuid())
    throw StoreError(Kind::foreignOwner,
                     fmt::format("{} belongs to another user; run Habitra as that user, or choose another home with "
                                 "HABITRA_HOME",
                                 path.string()));
}

void writeAll(int descriptor, std::string_view content, const std::filesystem::path& path) {
  while (!content.empty()) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("cannot write", path);
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

void writeNewFile(const std::filesystem::path& path, std::string_view content) {
  const qz::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen()) fail("cannot make", path);
  if (::fchmod(file.get(), 0600) != 0) fail("cannot protect", path);
  writeAll(file.get(), content, path);
  if (::fsync(file.get()) != 0) fail("cannot flush", path);
}

void flushFolder(const std::filesystem::path& folder) {
  const qz::FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor.isOpen() || ::fsync(descriptor.get()) != 0) fail("cannot flush the folder", folder);
}

}  // namespace

std::optional<std::string> readDefaultsFile(const std::filesystem::path& file) {
  // Without O_NONBLOCK the opening of a pipe would wait for its writer.
  const qz::FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!descriptor.isOpen()) {
    if (errno == ENOENT) return std::nullopt;
    fail("cannot read", file);
  }
  requireOwnPlainFile(descriptor.get(), file);
  std::string content;
  std::array<char, 4096> part{};
  for (;;) {
    const ssize_t count = ::read(descriptor.get(), part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("cannot read", file);
    if (count == 0) return content;
    content.append(part.data(), static_cast<std::size_t>(count));
  }
}

DefaultsFileTurn::DefaultsFileTurn(const std::filesystem::path& file, std::chrono::milliseconds patience)
    : file_(makeHomeFolder(std::filesystem::absolute(file).parent_path()) / file.filename()) {
  try {
    open();
    lock(patience);
  } catch (...) {
    close();
    throw;
  }
}

DefaultsFileTurn::~DefaultsFileTurn() { close(); }

void DefaultsFileTurn::open() {
  const std::filesystem::path path = file_.string() + ".lock";
  lock_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (lock_ < 0) fail("cannot write", path);
  requireOwnPlainFile(lock_, path);
  if (::fchmod(lock_, 0600) != 0) fail("cannot protect", path);
}

void DefaultsFileTurn::close() noexcept {
  if (lock_ >= 0) ::close(std::exchange(lock_, -1));
}

bool DefaultsFileTurn::tryOnce() {
  if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) fail("cannot lock", file_.string() + ".lock");
    return false;
  }
  if (isLinked(lock_)) return true;
  // Somebody has removed the file; the next one to come would lock another.
  close();
  open();
  return tryOnce();
}

void DefaultsFileTurn::lock(std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (std::chrono::microseconds pause = 50us; !tryOnce();
       pause = std::min<std::chrono::microseconds>(pause * 2, 2ms)) {
    if (std::chrono::steady_clock::now() >= deadline)
      throw StoreError(Kind::busy,
                       fmt::format("another Habitra program is still writing {} after {} seconds; try "
                                   "again later",
                                   file_.string(), std::chrono::duration_cast<std::chrono::seconds>(patience).count()));
    std::this_thread::sleep_for(pause);
  }
}

void DefaultsFileTurn::replace(std::string_view content) const {
  const std::filesystem::path temporary = file_.string() + ".new";
  ::unlink(temporary.c_str());  // what a writer left that was killed in the middle
  try {
    writeNewFile(temporary, content);
    if (std::rename(temporary.c_str(), file_.c_str()) != 0) fail("cannot replace", file_);
  } catch (...) {
    ::unlink(temporary.c_str());
    throw;
  }
  flushFolder(file_.parent_path());
}

}  // namespace habitra
