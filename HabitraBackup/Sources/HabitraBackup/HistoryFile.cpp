#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraBackup/HistoryBeginning.h>
#include <HabitraBackup/HistoryFile.h>
#include <QZKit/Error.h>

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

/// The folder of another tracker that is given by itself or by one of its two files; none for other paths.
std::optional<std::filesystem::path> foreignFolderAt(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return path;
  const std::string name = path.filename().string();
  if (name != "log" && name != "habits") return std::nullopt;
  // Two files without endings belong together.
  const bool areTwo = std::filesystem::is_regular_file(path, error) &&
                      std::filesystem::exists(path.parent_path() / (name == "log" ? "habits" : "log"), error);
  if (!areTwo) return std::nullopt;
  return path.parent_path().empty() ? "." : path.parent_path();
}

LoadedHistory ofForeign(ForeignHistory foreign) {
  ImportRemarks remarks = foreign.importRemarks();
  return {.form = LoadedHistory::Form::foreign, .document = std::move(foreign.document), .remarks = std::move(remarks)};
}

LoadedHistory ofDocument(const ByteSource& source) {
  LoadedBackup read = HabitraBackup::loadJson(source);
  LoadedHistory loaded{.form = LoadedHistory::Form::document, .document = std::move(read.document), .remarks = {}};
  for (const auto& [key, count] : read.remarks.unknownKeys)
    loaded.remarks.ofAll.push_back(fmt::format("This version does not know \"{}\", which was left out {}", key,
                                               count == 1 ? "once" : fmt::format("{} times", count)));
  return loaded;
}

LoadedHistory ofBytes(HistoryBeginning& beginning, const std::string& name, const ForeignHistorySettings& settings) {
  const ByteSource source = [&beginning](std::span<char> chunk) { return beginning.read(chunk); };
  switch (beginning.form()) {
    case HistoryForm::document: return ofDocument(source);
    case HistoryForm::foreignJSON: return ofForeign(readForeignJSON(source, name, settings));
    case HistoryForm::archive:
    case HistoryForm::database:
      throw qz::Error(name +
                      ": an archive or a database of another tracker can only be read from a file that is named and "
                      "not compressed");
    case HistoryForm::loopTable:
      throw qz::Error(name +
                      ": this is one of the tables that the CSV export of Loop Habit Tracker consists of; give the "
                      "folder or the archive that it lies in");
    case HistoryForm::rows: break;
  }
  return {.form = LoadedHistory::Form::rows, .document = HabitraBackup::loadCsv(source, settings.now), .remarks = {}};
}

/// A file of known size, read with a count of its bytes. Once it is told of, so is how much has been read.
class CountedBytes {
 public:
  CountedBytes(const ByteSource& source, std::uintmax_t size) : source_(source), size_(size) {}

  void tell(const ExchangeProgress& progress) {
    progress_ = progress;
    tell();
  }

  std::size_t read(std::span<char> chunk) {
    const std::size_t count = source_(chunk);
    read_ += count;
    tell();
    return count;
  }

 private:
  void tell() const {
    if (progress_ && size_ > 0) progress_("reading", static_cast<double>(read_) / static_cast<double>(size_));
  }

  const ByteSource& source_;
  std::uintmax_t size_;
  std::uintmax_t read_ = 0;
  ExchangeProgress progress_;
};

}  // namespace

LoadedHistory loadHistory(const std::filesystem::path& path, const ForeignHistorySettings& settings,
                          const ExchangeProgress& progress) {
  if (const auto folder = foreignFolderAt(path)) return ofForeign(readForeignFolder(*folder, settings, progress));
  std::error_code error;
  const bool isFile = std::filesystem::is_regular_file(path, error);
  const std::uintmax_t size = isFile ? std::filesystem::file_size(path, error) : 0;
  LoadedHistory loaded;
  std::optional<HistoryForm> namedForm;  // of what a library reads that opens files by their names
  readFile(path, [&](const ByteSource& source) {
    CountedBytes counted(source, error ? 0 : size);
    const ByteSource raw = [&counted](std::span<char> chunk) { return counted.read(chunk); };
    DecompressingSource decompressing(raw);
    const ByteSource bytes = [&decompressing](std::span<char> chunk) { return decompressing.read(chunk); };
    HistoryBeginning beginning(bytes);
    const bool isNamed = beginning.form() == HistoryForm::archive || beginning.form() == HistoryForm::database;
    if (isNamed && isFile && !decompressing.isCompressed()) {
      namedForm = beginning.form();
      return;
    }
    counted.tell(progress);
    loaded = ofBytes(beginning, shownPath(path), settings);
  });
  if (namedForm == HistoryForm::archive) return ofForeign(readForeignArchive(path, settings, progress));
  if (namedForm == HistoryForm::database) return ofForeign(readForeignDatabase(path, settings, progress));
  return loaded;
}

LoadedHistory loadHistory(std::istream& stream, std::string_view name, const ForeignHistorySettings& settings) {
  LoadedHistory loaded;
  readStream(stream, name, [&](const ByteSource& source) {
    DecompressingSource decompressing(source);
    const ByteSource bytes = [&decompressing](std::span<char> chunk) { return decompressing.read(chunk); };
    HistoryBeginning beginning(bytes);
    loaded = ofBytes(beginning, shownPath(name), settings);
  });
  return loaded;
}

}  // namespace habitra
