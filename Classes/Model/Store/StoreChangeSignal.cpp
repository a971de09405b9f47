#include <HabitraModel/Store/HomeFolder.h>
#include <HabitraModel/Store/StoreChangeSignal.h>
#include <QZLog/Log.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace habitra {

StoreChangeSignal::StoreChangeSignal(std::shared_ptr<Store> store) : store_(std::move(store)) {}

StoreChangeSignal::~StoreChangeSignal() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void StoreChangeSignal::announce(std::int64_t sequence) noexcept {
  if (hasFailed_) return;
  try {
    if (store_->isInMemory())
      store_->tellListeners();
    else
      write(sequence);
  } catch (const std::exception& error) {
    hasFailed_ = true;
    qz::log::warning("Other programs are not told of changes: {}", error.what());
  }
}

void StoreChangeSignal::write(std::int64_t sequence) {
  const std::filesystem::path file = store_->file().parent_path() / fileName;
  if (descriptor_ < 0) {
    if (!isPrivateFile(file)) makePrivateFile(file);
    descriptor_ = ::open(file.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "cannot open " + file.string());
  }
  const std::string line = fmt::format("{:<19}\n", sequence);
  if (::pwrite(descriptor_, line.data(), line.size(), 0) != static_cast<ssize_t>(line.size()))
    throw std::system_error(errno, std::generic_category(), "cannot write " + file.string());
}

}  // namespace habitra
