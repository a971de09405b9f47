#include <QZLog/Log.h>

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <memory>
#include <mutex>
#include <string>

namespace qz::log {
namespace {

constexpr std::size_t fileSize = 1024 * 1024;
constexpr std::size_t olderFiles = 2;

spdlog::level::level_enum spdlogLevel(Level level) {
  switch (level) {
    case Level::debug: return spdlog::level::debug;
    case Level::info: return spdlog::level::info;
    case Level::warning: return spdlog::level::warn;
    case Level::error: return spdlog::level::err;
  }
  return spdlog::level::err;
}

/// Makes the file, empty or as it is, readable for its owner alone whatever the umask; the library, which would make it
/// for everybody, then only opens it. A link is not followed.
void createForOwnerOnly(const std::string& path) {
  constexpr mode_t mode = 0600;
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, mode);
  if (descriptor < 0) throw spdlog::spdlog_ex("cannot open " + path, errno);
  const bool isSet = ::fchmod(descriptor, mode) == 0;
  ::close(descriptor);
  if (!isSet) throw spdlog::spdlog_ex("cannot set the mode of " + path, errno);
}

/// Guards everything below it. The log is off the path of what people wait for, so one lock is enough.
class Log {
 public:
  void configure(Configuration configuration) {
    const std::lock_guard lock(mutex_);
    configuration_ = std::move(configuration);
    file_ = nullptr;
    fileFailed_ = false;
    standardError_ = nullptr;
  }

  bool isKept(Level level) {
    const std::lock_guard lock(mutex_);
    return configuration_.verbose || goesToFile(level);
  }

  void write(Level level, std::string_view message) {
    const std::lock_guard lock(mutex_);
    if (configuration_.verbose) logTo(standardErrorSink(), level, message);
    if (goesToFile(level)) {
      if (const auto sink = fileSink()) logTo(sink, level, message);
    }
  }

 private:
  bool goesToFile(Level level) const {
    return configuration_.file && !fileFailed_ && level >= configuration_.fileLevel;
  }

  static void logTo(const spdlog::sink_ptr& sink, Level level, std::string_view message) {
    spdlog::logger logger("habitra", sink);
    logger.set_level(spdlog::level::trace);
    logger.flush_on(spdlog::level::trace);
    // A line that does not fit on a full disk is lost; whoever reads the screen has been told of the disk already.
    logger.set_error_handler([](const std::string&) {});
    logger.log(spdlogLevel(level), spdlog::string_view_t(message.data(), message.size()));
  }

  const spdlog::sink_ptr& standardErrorSink() {
    if (!standardError_) {
      standardError_ = std::make_shared<spdlog::sinks::stderr_sink_mt>();
      standardError_->set_pattern("habitra: %l: %v");
    }
    return standardError_;
  }

  spdlog::sink_ptr fileSink() {
    if (file_) return file_;
    try {
      spdlog::file_event_handlers handlers;
      handlers.before_open = createForOwnerOnly;  // at every rotation, too
      file_ = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(configuration_.file->string(), fileSize,
                                                                     olderFiles, false, handlers);
      file_->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %P %l %v");
    } catch (const spdlog::spdlog_ex&) {
      fileFailed_ = true;
    }
    return file_;
  }

  std::mutex mutex_;
  Configuration configuration_;
  spdlog::sink_ptr file_;
  spdlog::sink_ptr standardError_;
  bool fileFailed_ = false;
};

Log& theLog() {
  // Never destroyed, so that a late message of another static object finds it.
  static Log& log = *new Log;
  return log;
}

}  // namespace

void configure(Configuration configuration) { theLog().configure(std::move(configuration)); }

bool isKept(Level level) noexcept { return theLog().isKept(level); }

void write(Level level, std::string_view message) noexcept {
  try {
    theLog().write(level, message);
  } catch (...) {
    // A message that cannot be written is lost; what it reports on goes on.
  }
}

}  // namespace qz::log
