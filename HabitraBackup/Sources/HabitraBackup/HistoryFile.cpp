#include <HabitraBackup/CSV/CSVSource.h>
#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <HabitraBackup/Document/HabitraJSONDecoder.h>
#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/HistoryFile.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace habitra {

namespace {

constexpr std::size_t beginningLength = 512;

/// A source whose first bytes can be looked at before they are read.
class Beginning {
 public:
  explicit Beginning(const ByteSource& source) : source_(source), first_(beginningLength) {
    while (length_ < first_.size()) {
      const std::size_t count = source_(std::span(first_).subspan(length_));
      if (count == 0) break;
      length_ += count;
    }
  }

  [[nodiscard]] std::string_view text() const { return {first_.data(), length_}; }

  std::size_t read(std::span<char> chunk) {
    if (taken_ == length_) return source_(chunk);
    const std::size_t count = std::min(chunk.size(), length_ - taken_);
    std::memcpy(chunk.data(), first_.data() + taken_, count);
    taken_ += count;
    return count;
  }

 private:
  const ByteSource& source_;
  std::vector<char> first_;
  std::size_t length_ = 0;
  std::size_t taken_ = 0;
};

std::string_view withoutBlanks(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

bool isJSON(std::string_view beginning) { return withoutBlanks(beginning).starts_with('{'); }

/// Whether a JSON text is another tracker's: its first key is one that our documents do not have.
bool isForeignJSON(std::string_view beginning) {
  std::string_view text = withoutBlanks(beginning);
  text = withoutBlanks(text.substr(1));
  return text.starts_with("\"habits\"") || text.starts_with("\"order\"");
}

bool isForeign(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return true;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  bool isForeign = false;
  readFile(path, [&isForeign](const ByteSource& source) {
    const Beginning beginning(source);
    const std::string_view text = beginning.text();
    isForeign = text.starts_with("SQLite format 3") || text.starts_with("PK\x03\x04") ||
                text.starts_with("PK\x05\x06") || (isJSON(text) && isForeignJSON(text));
  });
  return isForeign;
}

LoadedHistory ofOwn(const ByteSource& raw, qz::Moment now) {
  DecompressingSource decompressing(raw);
  const ByteSource bytes = [&decompressing](std::span<char> chunk) { return decompressing.read(chunk); };
  Beginning beginning(bytes);
  const bool isDocument = isJSON(beginning.text());
  const ByteSource source = [&beginning](std::span<char> chunk) { return beginning.read(chunk); };
  LoadedHistory loaded;
  if (!isDocument) {
    HabitraCSVImport import;
    HabitraJSONBackup::csvDecoder().decode(source, [&import](const HabitraCSVBackupRow& row) { import.add(row); });
    loaded.document = std::move(import).backup(now);
    return loaded;
  }
  LoadedBackup read = HabitraJSONDecoder().decode(source);
  loaded.document = std::move(read.document);
  for (const auto& [key, count] : read.remarks.unknownKeys)
    loaded.remarks.ofAll.push_back(fmt::format("This version does not know \"{}\", which was left out {}", key,
                                               count == 1 ? "once" : fmt::format("{} times", count)));
  return loaded;
}

/// Tells how much of a file of known size has been read.
ByteSource told(const ByteSource& source, std::uintmax_t size, const ExchangeProgress& progress) {
  return [&source, size, &progress, read = std::uintmax_t{0}](std::span<char> chunk) mutable {
    const std::size_t count = source(chunk);
    read += count;
    if (progress && size > 0) progress("reading", static_cast<double>(read) / static_cast<double>(size));
    return count;
  };
}

}  // namespace

LoadedHistory loadHistory(const std::filesystem::path& path, const ForeignHistorySettings& settings,
                          const ExchangeProgress& progress) {
  if (isForeign(path)) {
    ForeignHistory foreign = readForeignHistory(path, settings);
    ImportRemarks remarks = foreign.importRemarks();
    return {.document = std::move(foreign.document), .remarks = std::move(remarks)};
  }
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  LoadedHistory loaded;
  readFile(path,
           [&](const ByteSource& source) { loaded = ofOwn(told(source, error ? 0 : size, progress), settings.now); });
  return loaded;
}

LoadedHistory loadHistory(std::istream& stream, std::string_view name, qz::Moment now) {
  LoadedHistory loaded;
  readStream(stream, name, [&](const ByteSource& source) { loaded = ofOwn(source, now); });
  return loaded;
}

}  // namespace habitra
