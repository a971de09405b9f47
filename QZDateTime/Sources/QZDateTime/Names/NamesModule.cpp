#include <QZDateTime/Names/EnglishNames.h>
#include <QZDateTime/Names/NamesModule.h>

#include <dlfcn.h>
#include <filesystem>

namespace qz {
namespace {

/// Null when the module or its entry is missing.
MakeNameSource openModule() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return nullptr;
  const std::filesystem::path module = program.parent_path() / ".." / "lib" / "libQZDateTimeNames.so";
  void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return nullptr;
  return reinterpret_cast<MakeNameSource>(dlsym(handle, makeNameSourceSymbol));
}

bool namesLanguage(const std::string& locale) {
  const std::string name = locale.substr(0, locale.find_first_of(".@"));
  return !name.empty() && name != "C" && name != "POSIX";
}

}  // namespace

std::unique_ptr<const NameSource> nameSource(const std::string& locale) {
  if (namesLanguage(locale)) {
    static const MakeNameSource make = openModule();
    if (make != nullptr) {
      if (NameSource* source = make(locale.c_str())) return std::unique_ptr<const NameSource>(source);
    }
  }
  return std::make_unique<const EnglishNames>();
}

}  // namespace qz
