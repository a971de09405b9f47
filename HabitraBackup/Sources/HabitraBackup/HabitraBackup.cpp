#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/HabitraBackup.h>

#include <algorithm>
#include <cstring>

namespace habitra {

namespace {

ByteSource bytesOf(std::span<const std::byte> data) {
  return [data](std::span<char> chunk) mutable {
    const std::size_t length = std::min(chunk.size(), data.size());
    if (length > 0) std::memcpy(chunk.data(), data.data(), length);
    data = data.subspan(length);
    return length;
  };
}

}  // namespace

HabitraJSONBackup HabitraBackup::loadCsv(const ByteSource& source, qz::Moment now) {
  DecompressingSource text(source);
  HabitraCSVImport import;
  HabitraJSONBackup::csvDecoder().decode([&text](std::span<char> chunk) { return text.read(chunk); },
                                         [&import](const HabitraCSVBackupRow& row) { import.add(row); });
  return std::move(import).backup(now);
}

HabitraJSONBackup HabitraBackup::loadCsv(const std::filesystem::path& url, qz::Moment now) {
  HabitraJSONBackup loaded;
  readFile(url, [&](const ByteSource& source) { loaded = loadCsv(source, now); });
  return loaded;
}

HabitraJSONBackup HabitraBackup::loadCsv(std::span<const std::byte> data, qz::Moment now) {
  return loadCsv(bytesOf(data), now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::istream& stream, std::string_view name, qz::Moment now) {
  HabitraJSONBackup loaded;
  readStream(stream, name, [&](const ByteSource& source) { loaded = loadCsv(source, now); });
  return loaded;
}

LoadedBackup HabitraBackup::loadJson(const ByteSource& source) {
  DecompressingSource text(source);
  return HabitraJSONDecoder().decode([&text](std::span<char> chunk) { return text.read(chunk); });
}

LoadedBackup HabitraBackup::loadJson(const std::filesystem::path& url) {
  LoadedBackup loaded;
  readFile(url, [&loaded](const ByteSource& source) { loaded = loadJson(source); });
  return loaded;
}

LoadedBackup HabitraBackup::loadJson(std::span<const std::byte> data) { return loadJson(bytesOf(data)); }

LoadedBackup HabitraBackup::loadJson(std::istream& stream, std::string_view name) {
  LoadedBackup loaded;
  readStream(stream, name, [&loaded](const ByteSource& source) { loaded = loadJson(source); });
  return loaded;
}

}  // namespace habitra
