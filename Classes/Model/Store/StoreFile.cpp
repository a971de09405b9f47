#include <HabitraModel/Store/StoreFile.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <system_error>

namespace habitra {

namespace {

bool mayWrite(const std::filesystem::path& path) { return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0; }

bool hasWriteAheadLog(const std::filesystem::path& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(file.string() + "-wal", error);
  return !error && size > 0;
}

}  // namespace

StoreFile StoreFile::at(const std::filesystem::path& file) {
  const bool isReadOnly = !mayWrite(file) || !mayWrite(file.parent_path());
  return {isReadOnly, isReadOnly && !hasWriteAheadLog(file) ? immutableAddress(file) : file.string()};
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
