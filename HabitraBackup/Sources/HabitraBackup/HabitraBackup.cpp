#include <HabitraBackup/CSVError.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraBackup/HabitraCSVImport.h>
#include <HabitraBackup/TaskDataExchangeError.h>
#include <QZKit/UTF8.h>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace habitra {

namespace {

HabitraJSONBackup load(const ByteSource& source, qz::Moment now) {
  HabitraCSVImport import;
  HabitraJSONBackup::csvDecoder().decode(source, [&import](const HabitraCSVBackupRow& row) { import.add(row); });
  return std::move(import).backup(now);
}

HabitraJSONBackup load(const ByteSource& source, const std::string& name, qz::Moment now) {
  try {
    return load(source, now);
  } catch (const CSVError& error) {
    throw error.in(name);
  }
}

std::string shown(std::string_view name) {
  constexpr std::size_t longestPath = 4096;  // the system's own limit: a name that can be opened is shown whole
  return qz::utf8::printable(name, longestPath);
}

class InputFile {
 public:
  explicit InputFile(const std::filesystem::path& path) : name_(shown(path.string())) {
    if (path.empty()) throw TaskDataExchangeError(TaskDataExchangeError::noUrl, "no file was named");
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ >= 0) return;
    const int error = errno;
    if (path.string().find("://") != std::string::npos) {
      throw TaskDataExchangeError(TaskDataExchangeError::notLocalFile, name_ + " is not a file of this machine");
    }
    fail(error);
  }
  ~InputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }

  std::size_t read(std::span<char> chunk) const {
    ssize_t length = -1;
    do {
      length = ::read(descriptor_, chunk.data(), chunk.size());
    } while (length < 0 && errno == EINTR);
    if (length < 0) fail(errno);
    return static_cast<std::size_t>(length);
  }

 private:
  [[noreturn]] void fail(int errorNumber) const {
    throw qz::Error(fmt::format("{}: {}", name_, std::strerror(errorNumber)));
  }

  std::string name_;
  int descriptor_ = -1;
};

}  // namespace

HabitraJSONBackup HabitraBackup::loadCsv(const std::filesystem::path& url, qz::Moment now) {
  const InputFile file(url);
  return load([&file](std::span<char> chunk) { return file.read(chunk); }, file.name(), now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::span<const std::byte> data, qz::Moment now) {
  return load(
      [&data](std::span<char> chunk) {
        const std::size_t length = std::min(chunk.size(), data.size());
        if (length > 0) std::memcpy(chunk.data(), data.data(), length);
        data = data.subspan(length);
        return length;
      },
      now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::istream& stream, std::string_view name, qz::Moment now) {
  const std::string label = shown(name);
  return load(
      [&](std::span<char> chunk) {
        stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        if (stream.bad()) throw qz::Error(label + " cannot be read");
        return static_cast<std::size_t>(stream.gcount());
      },
      label, now);
}

}  // namespace habitra
