#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/StoreChangeSignal.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <QZLog/Log.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <utility>

namespace habitra {
namespace {

/// Asks for nothing but which file it is: once its times are asked for, too, newer kernels write them out anew with
/// the next change, which makes each commit a quarter slower.
bool identify(int folder, const char* file, struct statx& identity) {
  return ::statx(folder, file, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, STATX_INO, &identity) == 0;
}

}  // namespace

StoreChangeSignal::StoreChangeSignal(std::filesystem::path file) : file_(std::move(file)) {}

StoreChangeSignal::StoreChangeSignal(std::shared_ptr<const ChangeListeners> listeners)
    : listeners_(std::move(listeners)) {}

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
  if (listeners_ != nullptr) return;
  attempt([this] { open(); });
}

void StoreChangeSignal::announce(std::int64_t sequence) noexcept {
  const bool isTold = attempt([this, sequence] {
    if (listeners_ != nullptr)
      listeners_->tell();
    else
      write(sequence);
  });
  // That the file could be opened says nothing of that.
  if (isTold) hasFailed_ = false;
}

bool StoreChangeSignal::isInPlace() const {
  struct statx found {};
  struct statx opened {};
  return identify(AT_FDCWD, file_.c_str(), found) && identify(descriptor_, "", opened) &&
         found.stx_dev_major == opened.stx_dev_major && found.stx_dev_minor == opened.stx_dev_minor &&
         found.stx_ino == opened.stx_ino;
}

void StoreChangeSignal::open() {
  if (descriptor_ >= 0 && isInPlace()) return;
  if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  if (!isPrivateFile(file_)) makePrivateFile(file_);
  descriptor_ = ::open(file_.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor_ < 0) failWithErrno("cannot open", file_);
}

void StoreChangeSignal::write(std::int64_t sequence) {
  if (descriptor_ < 0) open();
  const std::string line = fmt::format("{:<19}\n", sequence);
  if (::pwrite(descriptor_, line.data(), line.size(), 0) != static_cast<ssize_t>(line.size()))
    failWithErrno("cannot write", file_);
}

}  // namespace habitra
