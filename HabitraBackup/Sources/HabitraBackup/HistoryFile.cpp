#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraBackup/HistoryFile.h>
#include <QZKit/Error.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
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

bool isArchiveOrDatabase(std::string_view beginning) {
  return beginning.starts_with("SQLite format 3") || beginning.starts_with("PK\x03\x04") ||
         beginning.starts_with("PK\x05\x06");
}

/// Looks at the keys of a JSON object, up to one that tells whose it is.
class OwnerOfJSON : public nlohmann::json_sax<nlohmann::json> {
 public:
  [[nodiscard]] bool isForeign() const { return isForeign_; }

  bool key(std::string& name) override {
    if (depth_ != 1) return true;
    isForeign_ = name == "habits";
    return !isForeign_ && name != "version" && name != "tasks";
  }
  bool start_object(std::size_t) override { return ++depth_ < deepest; }
  bool end_object() override { return --depth_ > 0; }
  bool start_array(std::size_t) override { return ++depth_ < deepest; }
  bool end_array() override { return --depth_ > 0; }
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

 private:
  static constexpr int deepest = 64;
  int depth_ = 0;
  bool isForeign_ = false;
};

bool isForeignJSON(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  OwnerOfJSON owner;
  (void)nlohmann::json::sax_parse(file, &owner);
  return owner.isForeign();
}

/// Where the history of another tracker begins at `path`; none where it is one of our own.
std::optional<std::filesystem::path> foreignHistoryAt(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return path;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  // Two files without endings belong together.
  const std::string name = path.filename().string();
  if ((name == "log" && std::filesystem::exists(path.parent_path() / "habits", error)) ||
      (name == "habits" && std::filesystem::exists(path.parent_path() / "log", error)))
    return path.parent_path().empty() ? "." : path.parent_path();
  bool isForeign = false;
  readFile(path, [&](const ByteSource& source) {
    const Beginning beginning(source);
    isForeign = isArchiveOrDatabase(beginning.text()) || (isJSON(beginning.text()) && isForeignJSON(path));
  });
  return isForeign ? std::optional(path) : std::nullopt;
}

LoadedHistory ofOwn(const ByteSource& raw, qz::Moment now) {
  DecompressingSource decompressing(raw);
  const ByteSource bytes = [&decompressing](std::span<char> chunk) { return decompressing.read(chunk); };
  Beginning beginning(bytes);
  if (isArchiveOrDatabase(beginning.text()))
    throw qz::Error("an archive or a database of another tracker can only be read from a file that is named");
  const bool isDocument = isJSON(beginning.text());
  const ByteSource source = [&beginning](std::span<char> chunk) { return beginning.read(chunk); };
  LoadedHistory loaded;
  if (!isDocument) {
    loaded.form = LoadedHistory::Form::rows;
    loaded.document = HabitraBackup::loadCsv(source, now);
    return loaded;
  }
  LoadedBackup read = HabitraBackup::loadJson(source);
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
  if (const auto foreignPath = foreignHistoryAt(path)) {
    ForeignHistory foreign = readForeignHistory(*foreignPath, settings);
    ImportRemarks remarks = foreign.importRemarks();
    return {
        .form = LoadedHistory::Form::foreign, .document = std::move(foreign.document), .remarks = std::move(remarks)};
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
