#include <HabitraModel/Store/StoreFile.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <system_error>

namespace habitra {

namespace {

/// Whether there is more of the store than its file: a write-ahead log, or the journal of a change to take back.
bool hasLog(const std::filesystem::path& file) {
  const auto isFilled = [&file](const char* suffix) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file.string() + suffix, error);
    return !error && size > 0;
  };
  return isFilled("-wal") || isFilled("-journal");
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
  return hasLog(file) ? file.string() : immutableAddress(file);
}

std::string StoreFile::immutableAddress(const std::filesystem::path& file) {
  std::string address = "file:";
  for (const char c : file.string()) {
    if (c == '?' || c == '#' || c == '%')
      address += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    else
      address += c;
  }
  return address + "?immutable=1";
}

}  // namespace habitra
