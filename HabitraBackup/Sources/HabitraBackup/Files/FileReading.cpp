#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraBackup/Files/CompressionError.h>
#include <HabitraBackup/Files/FileReading.h>
#include <QZKit/UTF8.h>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace habitra {

namespace {

class InputFile {
 public:
  explicit InputFile(const std::filesystem::path& path) : name_(shownPath(path)) {
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

void readNamed(const std::string& name, const ByteSource& source, const std::function<void(const ByteSource&)>& read) {
  try {
    read(source);
  } catch (const CSVError& error) {
    throw error.in(name);
  } catch (const HabitraJSONError& error) {
    throw error.in(name);
  } catch (const CompressionError& error) {
    throw error.in(name);
  }
}

}  // namespace

void readFile(const std::filesystem::path& file, const std::function<void(const ByteSource&)>& read) {
  const InputFile input(file);
  readNamed(
      input.name(), [&input](std::span<char> chunk) { return input.read(chunk); }, read);
}

void readStream(std::istream& stream, std::string_view name, const std::function<void(const ByteSource&)>& read) {
  const std::string label = shownPath(name);
  const ByteSource source = [&](std::span<char> chunk) {
    stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    if (stream.bad()) throw qz::Error(label + " cannot be read");
    return static_cast<std::size_t>(stream.gcount());
  };
  readNamed(label, source, read);
}

std::string contentOf(const ByteSource& source, std::string_view name, std::uint64_t mostBytes) {
  std::string text;
  std::vector<char> chunk(std::size_t{1} << 18U);
  while (const std::size_t count = source(chunk)) {
    text.append(chunk.data(), count);
    if (text.size() > mostBytes)
      throw qz::Error(fmt::format("{}: more than {} MiB found, less was expected", name, mostBytes >> 20U));
  }
  return text;
}

std::string contentOfFile(const std::filesystem::path& file, std::uint64_t mostBytes) {
  std::string text;
  readFile(file, [&](const ByteSource& source) { text = contentOf(source, shownPath(file), mostBytes); });
  return text;
}

std::string shownPath(const std::filesystem::path& path) {
  constexpr std::size_t longestPath = 4096;  // the system's own limit: a name that can be opened is shown whole
  return qz::utf8::printable(path.string(), longestPath);
}

}  // namespace habitra
