#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace habitra {

namespace {

using Kind = StoreError::Kind;

struct Verdict {
  Kind kind;
  std::string_view advice;
};

Verdict verdict(int error) {
  switch (error) {
    case ENOSPC: return {Kind::diskFull, "make room on it and try again"};
    case EDQUOT: return {Kind::diskFull, "your quota is used up: remove something and try again"};
    case EROFS: return {Kind::readOnly, "choose another home with HABITRA_HOME, or mount it to be written"};
    case EACCES:
    case EPERM: return {Kind::failed, "give yourself the right to it, or choose another home with HABITRA_HOME"};
    case EMFILE:
    case ENFILE: return {Kind::failed, "end some other programs and try again"};
    case EIO: return {Kind::failed, "check the disk"};
    default: return {Kind::failed, "check the path, or choose another home with HABITRA_HOME"};
  }
}

}  // namespace

void failWithErrno(const char* what, const std::filesystem::path& path) {
  const int error = errno;
  const auto [kind, advice] = verdict(error);
  throw StoreError(kind,
                   fmt::format("{} {}: {}; {}", what, path.string(), std::generic_category().message(error), advice));
}

void failReadOnly(const std::filesystem::path& file) {
  throw StoreError(
      Kind::readOnly,
      fmt::format("{} can be read but not written; give yourself the right to write it and its folder", file.string()));
}

}  // namespace habitra
