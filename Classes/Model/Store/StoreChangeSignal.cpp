#include <HabitraModel/Store/HomeFolder.h>
#include <HabitraModel/Store/StoreChangeSignal.h>
#include <HabitraModel/Store/SystemFailure.h>
#include <QZLog/Log.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <utility>

namespace habitra {

StoreChangeSignal::StoreChangeSignal(std::shared_ptr<Store> store) : store_(std::move(store)) {}

StoreChangeSignal::~StoreChangeSignal() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

template <typename Step>
bool StoreChangeSignal::attempt(const Step& step) noexcept {
  try {
    step();
    return true;
  } catch (const std::exception& error) {
    if (!std::exchange(hasFailed_, true)) qz::log::warning("Other programs are not told of changes: {}", error.what());
    return false;
  }
}

void StoreChangeSignal::prepare() noexcept {
  if (store_->isInMemory()) return;
  attempt([this] { open(); });
}

void StoreChangeSignal::announce(std::int64_t sequence) noexcept {
  const bool isTold = attempt([this, sequence] {
    if (store_->isInMemory())
      store_->tellListeners();
    else
      write(sequence);
  });
  // That the file could be opened says nothing of that.
  if (isTold) hasFailed_ = false;
}

bool StoreChangeSignal::isInPlace() const {
  struct stat found {};
  struct stat opened {};
  return ::lstat(file().c_str(), &found) == 0 && ::fstat(descriptor_, &opened) == 0 && found.st_dev == opened.st_dev &&
         found.st_ino == opened.st_ino;
}

void StoreChangeSignal::open() {
  if (descriptor_ >= 0 && isInPlace()) return;
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  if (!isPrivateFile(file())) makePrivateFile(file());
  descriptor_ = ::open(file().c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot open", file());
}

void StoreChangeSignal::write(std::int64_t sequence) {
  open();
  const std::string line = fmt::format("{:<19}\n", sequence);
  if (::pwrite(descriptor_, line.data(), line.size(), 0) != static_cast<ssize_t>(line.size()))
    failWithErrno("cannot write", file());
}

}  // namespace habitra
