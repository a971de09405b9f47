#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <HabitraBackup/MovingIn/Zip/ZipArchive.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <dlfcn.h>
#include <string>

namespace habitra {

namespace {

/// Null when the module or its entry is missing.
UnpackZip openModule() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return nullptr;
  const std::filesystem::path module = program.parent_path() / ".." / "lib" / "libHabitraBackupZip.so";
  void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return nullptr;
  return reinterpret_cast<UnpackZip>(dlsym(handle, unpackZipSymbol));
}

}  // namespace

std::vector<ZipMember> readZipArchive(const std::filesystem::path& archive, bool (*isWanted)(std::string_view name)) {
  static const UnpackZip unpack = openModule();
  if (unpack == nullptr) {
    throw qz::Error(shownPath(archive) +
                    ": zip archives cannot be read here (libHabitraBackupZip.so is missing); unpack it and give the "
                    "folder");
  }
  const ZipRequest request{archive.c_str(), isWanted, foreign_limits::mostFiles, foreign_limits::largestContent};
  std::vector<ZipMember> members;
  std::string problem;
  if (!unpack(request, members, problem)) {
    constexpr std::size_t longestProblem = 1000;
    throw qz::Error(shownPath(archive) + ": " + qz::utf8::printable(problem, longestProblem));
  }
  return members;
}

}  // namespace habitra
