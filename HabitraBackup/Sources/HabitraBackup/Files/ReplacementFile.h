#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace habitra {

/// A file that takes another's place as a whole or not at all: it is written beside the target, flushed to the disk
/// and given the target's name. Until then, and after any failure, the target is as it was and nothing else is left
/// beside it. A link is followed to the file it names, unless it is to be replaced itself. A target that is no plain
/// file (a terminal, a pipe) is written to as it comes. Failures throw qz::Error that names the target. One object
/// belongs to one thread.
class ReplacementFile {
 public:
  enum class Links : bool { followed, replaced };

  explicit ReplacementFile(const std::filesystem::path& target, Links links = Links::followed);
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  void write(std::string_view bytes);
  /// Looks at the written file before it gets the target's name; what it throws keeps the target as it was.
  using Check = std::function<void(const std::filesystem::path& written)>;

  /// Gives the written file the target's name. REQUIRES: called once, after the last write; with a check, a target that
  /// is a plain file.
  void replace(const Check& check = {});

 private:
  void openBeside();
  [[noreturn]] void fail(std::string_view step, int errorNumber) const;

  std::filesystem::path name_;    // as the caller gave it, for messages
  std::filesystem::path target_;  // with links followed
  std::string temporary_;         // empty when the target is written to directly, and once it is replaced
  int descriptor_ = -1;
};

}  // namespace habitra
