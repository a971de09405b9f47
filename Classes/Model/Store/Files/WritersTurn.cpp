#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/Files/WritersTurn.h>
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

WritersTurn::WritersTurn(std::filesystem::path folder, std::chrono::milliseconds patience, std::string name)
    : folder_(std::move(folder)), name_(std::move(name)), patience_(patience) {}

WritersTurn::WritersTurn(std::shared_ptr<std::binary_semaphore> semaphore, std::chrono::milliseconds patience)
    : semaphore_(std::move(semaphore)), patience_(patience) {}

WritersTurn::~WritersTurn() {
  release();
  if (descriptor_ >= 0) ::close(descriptor_);
}

void WritersTurn::take() {
  qz::require(!isHeld_, "the writers' turn is taken twice");
  if (semaphore_ == nullptr && descriptor_ < 0) open();
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  for (std::chrono::microseconds pause = 50us; !tryOnce();
       pause = std::min<std::chrono::microseconds>(pause * 2, 2ms)) {
    if (std::chrono::steady_clock::now() >= deadline) {
      throw StoreError(StoreError::Kind::busy,
                       fmt::format("another Habitra program is still writing to {} after {} seconds; try again later",
                                   folder_.empty() ? std::string("the store in memory") : folder_.string(),
                                   std::chrono::duration_cast<std::chrono::seconds>(patience_).count()));
    }
    std::this_thread::sleep_for(pause);
  }
  isHeld_ = true;
}

void WritersTurn::release() noexcept {
  if (!isHeld_) return;
  isHeld_ = false;
  if (semaphore_ != nullptr)
    semaphore_->release();
  else
    ::flock(descriptor_, LOCK_UN);
}

bool WritersTurn::tryOnce() {
  if (semaphore_ != nullptr) return semaphore_->try_acquire();
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK || errno == EINTR) return false;
    failWithErrno("cannot lock", folder_ / name_);
  }
  if (isLinked(descriptor_)) return true;
  // Somebody has removed the file; the next one to come would lock another.
  ::close(std::exchange(descriptor_, -1));
  open();
  return tryOnce();
}

void WritersTurn::open() {
  const std::filesystem::path file = folder_ / name_;
  if (!isPrivateFile(file)) makePrivateFile(file);
  descriptor_ = ::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot open", file);
}

}  // namespace habitra
