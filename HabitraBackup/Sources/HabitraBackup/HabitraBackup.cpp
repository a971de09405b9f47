#include <HabitraBackup/CSV/CSVSource.h>
#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/HabitraBackup.h>

#include <algorithm>
#include <cstring>

namespace habitra {

namespace {

// `read` gets the source's bytes decompressed.
template <typename Read>
auto decompressed(const ByteSource& source, Read&& read) {
  DecompressingSource decompressing(source);
  return read(ByteSource([&decompressing](std::span<char> chunk) { return decompressing.read(chunk); }));
}

void decode(const ByteSource& source, HabitraCSVImport& import) {
  decompressed(source, [&import](const ByteSource& text) {
    HabitraJSONBackup::csvDecoder().decode(text, [&import](const HabitraCSVBackupRow& row) { import.add(row); });
  });
}

LoadedBackup decode(const ByteSource& source) {
  return decompressed(source, [](const ByteSource& text) { return HabitraJSONDecoder().decode(text); });
}

ByteSource bytesOf(std::span<const std::byte> data) {
  return [data](std::span<char> chunk) mutable {
    const std::size_t length = std::min(chunk.size(), data.size());
    if (length > 0) std::memcpy(chunk.data(), data.data(), length);
    data = data.subspan(length);
    return length;
  };
}

}  // namespace

HabitraJSONBackup HabitraBackup::loadCsv(const std::filesystem::path& url, qz::Moment now) {
  HabitraCSVImport import;
  readFile(url, [&import](const ByteSource& source) { decode(source, import); });
  return std::move(import).backup(now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::span<const std::byte> data, qz::Moment now) {
  HabitraCSVImport import;
  decode(bytesOf(data), import);
  return std::move(import).backup(now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::istream& stream, std::string_view name, qz::Moment now) {
  HabitraCSVImport import;
  readStream(stream, name, [&import](const ByteSource& source) { decode(source, import); });
  return std::move(import).backup(now);
}

LoadedBackup HabitraBackup::loadJson(const std::filesystem::path& url) {
  LoadedBackup loaded;
  readFile(url, [&loaded](const ByteSource& source) { loaded = decode(source); });
  return loaded;
}

LoadedBackup HabitraBackup::loadJson(std::span<const std::byte> data) { return decode(bytesOf(data)); }

LoadedBackup HabitraBackup::loadJson(std::istream& stream, std::string_view name) {
  LoadedBackup loaded;
  readStream(stream, name, [&loaded](const ByteSource& source) { loaded = decode(source); });
  return loaded;
}

}  // namespace habitra
