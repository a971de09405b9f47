#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct ZSTD_CCtx_s;
struct ZSTD_DCtx_s;

/// Compressed files, in the form of zstd: frames with a checksum over what they hold. Both directions work as a stream,
/// in memory of a fixed size.
namespace habitra {

/// Whether a file of that name is written compressed: its name ends in ".zst".
[[nodiscard]] bool isCompressedName(const std::filesystem::path& file);

/// Compresses what is written to it. One object belongs to one thread.
class CompressingSink {
 public:
  explicit CompressingSink(ByteSink sink);
  ~CompressingSink();
  CompressingSink(const CompressingSink&) = delete;
  CompressingSink& operator=(const CompressingSink&) = delete;

  void write(std::string_view bytes);
  /// Hands on the rest. REQUIRES: called once, after the last write.
  void finish();

 private:
  void compress(std::string_view bytes, bool isEnd);

  ByteSink sink_;
  ZSTD_CCtx_s* context_;
  std::string output_;
};

/// Reads what another source gives, decompressed when that begins like a compressed file and as it is otherwise; the
/// name of the file does not matter. Throws CompressionError for frames that are damaged or cut. One object belongs to
/// one thread and lives no longer than the other source.
class DecompressingSource {
 public:
  explicit DecompressingSource(const ByteSource& source);
  ~DecompressingSource();
  DecompressingSource(const DecompressingSource&) = delete;
  DecompressingSource& operator=(const DecompressingSource&) = delete;

  std::size_t read(std::span<char> chunk);
  [[nodiscard]] bool isCompressed() const { return context_ != nullptr; }

 private:
  /// Puts more of the other source behind what has not been taken yet; gives false at its end.
  bool fill();
  std::size_t readPlain(std::span<char> chunk);
  std::size_t readCompressed(std::span<char> chunk);

  const ByteSource& source_;
  std::vector<char> input_;
  std::size_t taken_ = 0;
  std::size_t end_ = 0;
  ZSTD_DCtx_s* context_ = nullptr;  // none while nothing is compressed
  bool isInFrame_ = false;
};

}  // namespace habitra
