#include <HabitraModel/Store/Files/ChangeListeners.h>
#include <HabitraModel/Store/Files/StoreChangeSignal.h>
#include <HabitraModel/Store/Files/StoreChangeWatcher.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/FileDescriptor.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace habitra {

namespace {

constexpr std::chrono::seconds timeBetweenAttempts{1};

/// Throws the StoreError for the present errno. The folder is empty for a store in memory.
[[noreturn]] void failToWatch(const std::filesystem::path& folder) {
  const int error = errno;
  // Here these mean that a number of the system's is used up, not the disk.
  const bool areTooMany = error == ENOSPC || error == EMFILE || error == ENFILE;
  throw StoreError(StoreError::Kind::failed,
                   fmt::format("cannot watch {} for changes by other programs: {}",
                               folder.empty() ? "the store in memory" : folder.string(),
                               areTooMany ? "too many files are open or watched; end some other programs"
                                          : std::generic_category().message(error) + "; check the path"));
}

/// Throws what failToWatch() does when the system has given none.
int required(int descriptor, const std::filesystem::path& folder) {
  if (descriptor < 0) failToWatch(folder);
  return descriptor;
}

/// Watches a file, and its folder for as long as that is not there.
class FileNotifications {
 public:
  explicit FileNotifications(const std::filesystem::path& file)
      : path_(file), folder_(file.parent_path()), queue_(required(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC), folder_)) {
    watch();
  }

  [[nodiscard]] int descriptor() const { return queue_.get(); }

  /// Takes what has been reported; gives true when the file was written, or closed by who could write it, or is there
  /// anew. Throws StoreError when neither file nor folder can be watched; watch() may be tried again then.
  bool take() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool hasChanged = false;
    bool isLost = false;
    for (ssize_t size = 0; (size = ::read(queue_.get(), buffer.data(), buffer.size())) > 0;) {
      for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + at, sizeof event);
        at += sizeof event + event.len;
        if ((event.mask & (IN_MODIFY | IN_CLOSE_WRITE | IN_Q_OVERFLOW)) != 0) hasChanged = true;
        if (event.wd == home_ && (event.mask & IN_IGNORED) != 0) home_ = -1;
        if (event.wd == file_ && (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_IGNORED)) != 0)
          isLost = true;
      }
    }
    if (file_ < 0 || isLost) hasChanged = watch() || hasChanged;
    return hasChanged;
  }

  /// Watches the file afresh; gives true when it is there.
  bool watch() {
    if (file_ >= 0) ::inotify_rm_watch(queue_.get(), std::exchange(file_, -1));
    // The folder first: a file that comes between the two is then reported or found.
    if (home_ < 0) home_ = ::inotify_add_watch(queue_.get(), folder_.c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR);
    file_ =
        ::inotify_add_watch(queue_.get(), path_.c_str(),
                            IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_DONT_FOLLOW);
    if (file_ < 0 && home_ < 0) failToWatch(folder_);
    if (file_ < 0) return false;
    if (home_ >= 0) ::inotify_rm_watch(queue_.get(), std::exchange(home_, -1));
    return true;
  }

 private:
  std::filesystem::path path_;
  std::filesystem::path folder_;
  qz::FileDescriptor queue_;
  int home_ = -1;
  int file_ = -1;
};

}  // namespace

/// The thread that waits, and what it waits for.
class StoreChangeWatcher::Watching {
 public:
  Watching(const std::filesystem::path& file, std::function<void()> onChange)
      : onChange_(std::move(onChange)), event_(required(::eventfd(0, EFD_CLOEXEC), file.parent_path())) {
    notifications_.emplace(file);
    thread_ = std::thread([this] { run(); });
  }

  Watching(ChangeListeners& listeners, std::function<void()> onChange)
      : onChange_(std::move(onChange)), event_(required(::eventfd(0, EFD_CLOEXEC), {})) {
    listening_ = listeners.listen([this] { ring(); });
    thread_ = std::thread([this] { run(); });
  }

  ~Watching() {
    listening_.reset();
    {
      const std::scoped_lock lock(endingMutex_);
      isEnding_ = true;
    }
    ending_.notify_all();
    ring();
    thread_.join();
  }

 private:
  void ring() const {
    // Cannot fail before 2^64 rings.
    ::eventfd_write(event_.get(), 1);
  }

  void run() {
    bool hasFailed = false;
    while (!isEnding_) {
      try {
        if (hasFailed) {
          if (notifications_) notifications_->watch();
          hasFailed = false;
          call();  // nobody has seen what came in between
        }
        while (waitForChange()) call();
      } catch (const std::exception& error) {
        if (!std::exchange(hasFailed, true)) qz::log::error("{}", error.what());
        std::unique_lock lock(endingMutex_);
        ending_.wait_for(lock, timeBetweenAttempts, [this] { return isEnding_.load(); });
      }
    }
  }

  /// Gives false at the end.
  bool waitForChange() {
    std::array<pollfd, 2> waited{pollfd{event_.get(), POLLIN, 0},
                                 pollfd{notifications_ ? notifications_->descriptor() : -1, POLLIN, 0}};
    for (bool hasChanged = false; !hasChanged;) {
      if (::poll(waited.data(), waited.size(), -1) < 0) {
        if (errno == EINTR) continue;
        throw std::system_error(errno, std::generic_category(), "cannot wait for changes");
      }
      if ((waited[0].revents & POLLIN) != 0) {
        eventfd_t count = 0;
        ::eventfd_read(event_.get(), &count);
        hasChanged = true;
      }
      if (isEnding_) return false;
      if (notifications_ && (waited[1].revents & POLLIN) != 0) hasChanged = notifications_->take() || hasChanged;
    }
    return true;
  }

  void call() {
    try {
      onChange_();
    } catch (const std::exception& error) {
      qz::log::error("A change of the store could not be handled: {}", error.what());
    }
  }

  std::function<void()> onChange_;
  qz::FileDescriptor event_;
  std::optional<FileNotifications> notifications_;
  std::shared_ptr<void> listening_;
  std::atomic<bool> isEnding_{false};
  std::mutex endingMutex_;
  std::condition_variable ending_;
  std::thread thread_;
};

StoreChangeWatcher::StoreChangeWatcher(const Store& store, std::function<void()> onChange)
    : watching_(store.isInMemory()
                    ? std::make_unique<Watching>(store.listeners(), std::move(onChange))
                    : std::make_unique<Watching>(store.file().parent_path() / StoreChangeSignal::fileName,
                                                 std::move(onChange))) {}

StoreChangeWatcher::StoreChangeWatcher(const std::filesystem::path& file, std::function<void()> onChange)
    : watching_(std::make_unique<Watching>(file, std::move(onChange))) {}

StoreChangeWatcher::StoreChangeWatcher(ChangeListeners& listeners, std::function<void()> onChange)
    : watching_(std::make_unique<Watching>(listeners, std::move(onChange))) {}

StoreChangeWatcher::~StoreChangeWatcher() = default;

}  // namespace habitra
