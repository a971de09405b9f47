#include <HabitraBackup/Files/ByteOrderMark.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/MovingIn/ForeignFiles.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <HabitraBackup/MovingIn/Zip/ZipArchive.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <algorithm>
#include <optional>
#include <vector>

namespace habitra {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view loopHabits = "Habits.csv";
constexpr std::string_view loopMarks = "Checkmarks.csv";

std::string_view baseName(std::string_view name) { return name.substr(name.rfind('/') + 1); }

bool isAskedFor(std::string_view name) {
  const std::string_view base = baseName(name);
  return base == loopHabits || base == loopMarks || base == "habits" || base == "log";
}

/// What may still be read of a folder.
class Allowance {
 public:
  explicit Allowance(const fs::path& folder) : folder_(folder) {}

  void countFile() {
    if (++files_ > foreign_limits::mostFiles) {
      throw qz::Error(fmt::format("{}: more than {} files found, the folder of an export was expected",
                                  shownPath(folder_), foreign_limits::mostFiles));
    }
  }
  std::string read(const fs::path& file) {
    std::string text = contentOfFile(file, bytes_);
    bytes_ -= text.size();
    return text;
  }

 private:
  fs::path folder_;
  std::size_t files_ = 0;
  std::uint64_t bytes_ = foreign_limits::largestContent;
};

/// The folder of an archive in which the export stands: that of its uppermost Habits.csv.
std::string exportFolder(const std::vector<ZipMember>& members) {
  std::optional<std::string> folder;
  for (const ZipMember& member : members) {
    if (baseName(member.name) != loopHabits) continue;
    std::string its = member.name.substr(0, member.name.size() - loopHabits.size());
    if (!folder || its.size() < folder->size()) folder = std::move(its);
  }
  return folder.value_or(std::string());
}

}  // namespace

ForeignFiles ForeignFiles::ofFolder(const fs::path& folder) {
  ForeignFiles files(shownPath(folder));
  Allowance allowance(folder);
  const auto take = [&](const fs::directory_entry& entry, const std::string& name) {
    if (isAskedFor(name) && entry.is_regular_file()) files.texts_.emplace(name, allowance.read(entry.path()));
  };
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    allowance.countFile();
    const std::string name = entry.path().filename().string();
    take(entry, name);
    if (!entry.is_directory() || entry.is_symlink() || !fs::is_regular_file(entry.path() / loopMarks)) continue;
    allowance.countFile();
    take(fs::directory_entry(entry.path() / loopMarks), name + "/" + std::string(loopMarks));
  }
  return files;
}

ForeignFiles ForeignFiles::ofArchive(const fs::path& archive) {
  ForeignFiles files(shownPath(archive));
  const std::vector<ZipMember> members = readZipArchive(archive, isAskedFor);
  const std::string folder = exportFolder(members);
  for (const ZipMember& member : members) {
    if (!member.name.starts_with(folder)) continue;
    const bool isNew = files.texts_.emplace(member.name.substr(folder.size()), member.content).second;
    if (!isNew) throw qz::Error(files.shown(member.name) + ": found twice in the archive, once was expected");
  }
  if (files.find(std::string(loopHabits)) == nullptr) {
    throw qz::Error(shownPath(archive) + ": no Habits.csv found, the CSV export of Loop Habit Tracker was expected");
  }
  return files;
}

const std::string* ForeignFiles::find(const std::string& name) const {
  const auto found = texts_.find(name);
  return found == texts_.end() ? nullptr : &found->second;
}

std::string ForeignFiles::shown(std::string_view name) const { return root_ + "/" + shownPath(fs::path(name)); }

void forEachLine(const std::string& text, const std::string& name, const ForeignLineHandler& onLine) {
  std::string_view rest = text;
  if (rest.starts_with(byteOrderMark)) rest.remove_prefix(byteOrderMark.size());
  for (std::size_t line = 1; !rest.empty(); ++line) {
    if (line > foreign_limits::mostRows) {
      throw qz::Error(fmt::format("{}: more than {} lines found, fewer were expected", name, foreign_limits::mostRows));
    }
    const std::string_view found = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), found.size() + 1));
    const auto bad = std::min(qz::utf8::firstInvalidByte(found).value_or(found.size()), found.find('\0'));
    if (bad < found.size()) {
      throw qz::Error(fmt::format("{}: line {}: byte 0x{:02X} is not text (UTF-8 expected)", name, line,
                                  static_cast<unsigned char>(found[bad])));
    }
    onLine(line, found);
  }
}

}  // namespace habitra
