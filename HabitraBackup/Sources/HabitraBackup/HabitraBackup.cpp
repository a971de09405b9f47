#include <HabitraBackup/CSV/CSVSource.h>
#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <HabitraBackup/HabitraBackup.h>

#include <algorithm>
#include <cstring>

namespace habitra {

namespace {

void decode(const ByteSource& source, HabitraCSVImport& import) {
  HabitraJSONBackup::csvDecoder().decode(source, [&import](const HabitraCSVBackupRow& row) { import.add(row); });
}

}  // namespace

HabitraJSONBackup HabitraBackup::loadCsv(const std::filesystem::path& url, qz::Moment now) {
  HabitraCSVImport import;
  readFile(url, [&import](const ByteSource& source) { decode(source, import); });
  return std::move(import).backup(now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::span<const std::byte> data, qz::Moment now) {
  HabitraCSVImport import;
  const ByteSource source = [&data](std::span<char> chunk) {
    const std::size_t length = std::min(chunk.size(), data.size());
    if (length > 0) std::memcpy(chunk.data(), data.data(), length);
    data = data.subspan(length);
    return length;
  };
  decode(source, import);
  return std::move(import).backup(now);
}

HabitraJSONBackup HabitraBackup::loadCsv(std::istream& stream, std::string_view name, qz::Moment now) {
  HabitraCSVImport import;
  readStream(stream, name, [&import](const ByteSource& source) { decode(source, import); });
  return std::move(import).backup(now);
}

}  // namespace habitra
