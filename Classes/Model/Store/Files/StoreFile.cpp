#include <HabitraModel/Store/Files/StoreFile.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <atomic>
#include <string_view>
#include <system_error>

namespace habitra {

namespace {

bool isFilled(const std::filesystem::path& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  return !error && size > 0;
}

std::string addressWith(const std::filesystem::path& file, std::string_view parameter) {
  std::string address = "file:";
  for (const char c : file.string()) {
    if (c == '?' || c == '#' || c == '%')
      address += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    else
      address += c;
  }
  address += parameter;
  return address;
}

}  // namespace

bool StoreFile::mayWrite(const std::filesystem::path& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

StoreFile StoreFile::at(const std::filesystem::path& file) {
  const bool isReadOnly = !mayWrite(file) || !mayWrite(file.parent_path());
  return {isReadOnly, isReadOnly ? addressAtRest(file) : file.string()};
}

std::string StoreFile::addressAtRest(const std::filesystem::path& file) {
  if (isFilled(file.string() + "-journal")) return file.string();
  if (!isFilled(file.string() + "-wal")) return immutableAddress(file);
  std::error_code error;
  // While anybody has a store with a log open, the log's index lies beside it.
  return std::filesystem::exists(file.string() + "-shm", error) ? file.string() : addressWith(file, withoutLocks);
}

std::string StoreFile::immutableAddress(const std::filesystem::path& file) { return addressWith(file, "?immutable=1"); }

std::string StoreFile::newMemoryAddress() {
  static std::atomic<int> count{0};
  return fmt::format("file:/habitra-{}?vfs=memdb", ++count);
}

}  // namespace habitra
