#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraBackup/Files/ReplacementFile.h>

namespace habitra {

void writeFile(const std::filesystem::path& to, const std::function<void(const ByteSink&)>& write,
               const ReplacementFile::Check& check) {
  ReplacementFile file(to);
  const ByteSink plain = [&file](std::string_view bytes) { file.write(bytes); };
  if (isCompressedName(to)) {
    CompressingSink compressing(plain);
    write([&compressing](std::string_view bytes) { compressing.write(bytes); });
    compressing.finish();
  } else {
    write(plain);
  }
  file.replace(check);
}

}  // namespace habitra
