#include <HabitraModel/Store/HomeFolder.h>
#include <HabitraModel/Store/LockHolders.h>
#include <HabitraModel/Store/MaintenanceLock.h>
#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/Store/SystemFailure.h>
#include <QZKit/Trap.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

namespace habitra {

using namespace std::chrono_literals;

MaintenanceLock::MaintenanceLock(std::filesystem::path folder, std::chrono::milliseconds patience)
    : folder_(std::move(folder)), patience_(patience) {}

MaintenanceLock::~MaintenanceLock() { release(); }

void MaintenanceLock::takeShared() { take(Mode::shared); }

void MaintenanceLock::takeExclusive() { take(Mode::exclusive); }

void MaintenanceLock::release() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

void MaintenanceLock::take(Mode mode) {
  qz::require(descriptor_ < 0, "the maintenance lock is taken twice");
  if (!open(mode)) return;
  try {
    const auto deadline = std::chrono::steady_clock::now() + patience_;
    for (auto pause = 1ms; !tryOnce(mode); pause = std::min(pause * 2, 20ms)) {
      if (std::chrono::steady_clock::now() >= deadline) failBusy(mode);
      std::this_thread::sleep_for(pause);
    }
  } catch (...) {
    release();
    throw;
  }
}

bool MaintenanceLock::open(Mode mode) {
  const std::filesystem::path file = folder_ / fileName;
  if (!isPrivateFile(file)) {
    try {
      makePrivateFile(file);
    } catch (const StoreError&) {
      if (mode == Mode::shared) return false;  // who only reads a home where nothing can be made is let in
      throw;
    }
  }
  descriptor_ = ::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0 && mode == Mode::shared) descriptor_ = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot open", file);
  return true;
}

bool MaintenanceLock::tryOnce(Mode mode) {
  if (::flock(descriptor_, (mode == Mode::shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK || errno == EINTR) return false;
    failWithErrno("cannot lock", folder_ / fileName);
  }
  struct stat status {};
  if (::fstat(descriptor_, &status) == 0 && status.st_nlink > 0) return true;
  // Somebody has removed the file; the next one to come would lock another.
  release();
  return !open(mode);
}

void MaintenanceLock::failBusy(Mode mode) const {
  const std::string holders = lockHolders(descriptor_);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(patience_).count();
  throw StoreError(
      StoreError::Kind::busy,
      mode == Mode::shared
          ? fmt::format("the store in {} is under maintenance by {}, still after {} seconds; try again when it is done",
                        folder_.string(), holders, seconds)
          : fmt::format("the store in {} is in use by {}, still after {} seconds; end it and try again",
                        folder_.string(), holders, seconds));
}

}  // namespace habitra
