#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/LockHolders.h>
#include <HabitraModel/Store/Files/MaintenanceLock.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/Trap.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

namespace habitra {

using namespace std::chrono_literals;

namespace {

/// The byte that maintenance locks while it waits, and until it ends. Such a lock belongs to the open file, as those on
/// the whole file do, and knows nothing of those.
struct flock announcement(short type) {
  struct flock range {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_len = 1;
  return range;
}

}  // namespace

MaintenanceLock::MaintenanceLock(std::filesystem::path folder, std::chrono::milliseconds patience)
    : folder_(std::move(folder)), patience_(patience) {}

MaintenanceLock::~MaintenanceLock() { release(); }

void MaintenanceLock::takeShared() { (void)take(Mode::shared, {}); }

void MaintenanceLock::takeExclusive() { (void)take(Mode::exclusive, {}); }

bool MaintenanceLock::takeExclusiveWhile(const std::function<bool()>& isNeeded) {
  return take(Mode::exclusive, isNeeded);
}

void MaintenanceLock::release() noexcept {
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

bool MaintenanceLock::take(Mode mode, const std::function<bool()>& isNeeded) {
  qz::require(descriptor_ < 0, "the maintenance lock is taken twice");
  if (!open(mode)) return true;
  try {
    const auto deadline = std::chrono::steady_clock::now() + patience_;
    for (auto pause = 1ms; !tryOnce(mode); pause = std::min(pause * 2, 20ms)) {
      if (!isStillNeeded(isNeeded)) {
        release();
        return false;
      }
      if (std::chrono::steady_clock::now() >= deadline) failBusy(mode);
      std::this_thread::sleep_for(pause);
    }
  } catch (...) {
    release();
    throw;
  }
  return true;
}

bool MaintenanceLock::open(Mode mode) {
  const std::filesystem::path file = folder_ / fileName;
  if (!isPrivateFile(file)) {
    // Who can only read is let in: nobody can do maintenance there.
    if (mode == Mode::shared && !StoreFile::mayWrite(folder_)) return false;
    makePrivateFile(file);
  }
  descriptor_ = ::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0 && mode == Mode::shared) descriptor_ = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot open", file);
  return true;
}

bool MaintenanceLock::tryOnce(Mode mode) {
  if (mode == Mode::exclusive) announce();
  if (mode == Mode::shared && isAnnounced()) return false;
  if (!lock(mode)) return false;
  if (isLinked(descriptor_)) return true;
  // Somebody has removed the file; the next one to come would lock another.
  release();
  return !open(mode);
}

bool MaintenanceLock::lock(Mode mode) {
  if (::flock(descriptor_, (mode == Mode::shared ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK || errno == EINTR) return false;
  failWithErrno("cannot lock", folder_ / fileName);
}

void MaintenanceLock::announce() {
  struct flock range = announcement(F_WRLCK);
  // When another has said it, or this file system knows no such locks, it is the patience that must do.
  (void)::fcntl(descriptor_, F_OFD_SETLK, &range);
}

bool MaintenanceLock::isAnnounced() const {
  struct flock range = announcement(F_RDLCK);
  return ::fcntl(descriptor_, F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
}

bool MaintenanceLock::isStillNeeded(const std::function<bool()>& isNeeded) {
  // Under the shared lock, so that what is looked at is not being changed.
  if (!isNeeded || !lock(Mode::shared)) return true;
  const bool result = isNeeded();
  ::flock(descriptor_, LOCK_UN);
  return result;
}

void MaintenanceLock::failBusy(Mode mode) {
  const std::string holders = lockHolders(descriptor_);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(patience_).count();
  if (mode == Mode::shared && lock(mode))
    throw StoreError(
        StoreError::Kind::busy,
        fmt::format("maintenance of the store in {} is waiting for {}, still after {} seconds; end that or "
                    "try again later",
                    folder_.string(), holders, seconds));
  throw StoreError(
      StoreError::Kind::busy,
      mode == Mode::shared
          ? fmt::format("the store in {} is under maintenance by {}, still after {} seconds; try again when it is done",
                        folder_.string(), holders, seconds)
          : fmt::format("the store in {} is in use by {}, still after {} seconds; end it and try again",
                        folder_.string(), holders, seconds));
}

}  // namespace habitra
