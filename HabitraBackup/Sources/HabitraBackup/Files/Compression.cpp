#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/CompressionError.h>
#include <QZKit/Trap.h>

#include <zstd.h>
#include <algorithm>
#include <array>
#include <cstring>

namespace habitra {

namespace {

constexpr std::array magicNumber{'\x28', '\xB5', '\x2F', '\xFD'};

[[noreturn]] void fail(std::string_view problem) {
  throw CompressionError("the compressed data is " + std::string(problem));
}

}  // namespace

bool isCompressedName(const std::filesystem::path& file) { return file.extension() == ".zst"; }

CompressingSink::CompressingSink(ByteSink sink)
    : sink_(std::move(sink)), context_(ZSTD_createCCtx()), output_(ZSTD_CStreamOutSize(), '\0') {
  qz::require(context_ != nullptr, "there is memory for compressing");
  ZSTD_CCtx_setParameter(context_, ZSTD_c_checksumFlag, 1);
}

CompressingSink::~CompressingSink() { ZSTD_freeCCtx(context_); }

void CompressingSink::write(std::string_view bytes) { compress(bytes, false); }
void CompressingSink::finish() { compress({}, true); }

void CompressingSink::compress(std::string_view bytes, bool isEnd) {
  ZSTD_inBuffer input{bytes.data(), bytes.size(), 0};
  std::size_t left = 0;
  do {
    ZSTD_outBuffer output{output_.data(), output_.size(), 0};
    left = ZSTD_compressStream2(context_, &output, &input, isEnd ? ZSTD_e_end : ZSTD_e_continue);
    if (ZSTD_isError(left) != 0)
      throw CompressionError(std::string("cannot be compressed: ") + ZSTD_getErrorName(left));
    if (output.pos > 0) sink_(std::string_view(output_.data(), output.pos));
  } while (isEnd ? left > 0 : input.pos < input.size);
}

DecompressingSource::DecompressingSource(const ByteSource& source) : source_(source), input_(ZSTD_DStreamInSize()) {
  while (end_ < magicNumber.size() && fill()) {
  }
  const std::string_view begin(input_.data(), std::min(end_, magicNumber.size()));
  if (begin != std::string_view(magicNumber.data(), magicNumber.size())) return;
  context_ = ZSTD_createDCtx();
  qz::require(context_ != nullptr, "there is memory for decompressing");
}

DecompressingSource::~DecompressingSource() { ZSTD_freeDCtx(context_); }

bool DecompressingSource::fill() {
  if (taken_ == end_) taken_ = end_ = 0;
  const std::size_t length = source_(std::span(input_).subspan(end_));
  end_ += length;
  return length > 0;
}

std::size_t DecompressingSource::read(std::span<char> chunk) {
  return context_ == nullptr ? readPlain(chunk) : readCompressed(chunk);
}

std::size_t DecompressingSource::readPlain(std::span<char> chunk) {
  if (taken_ == end_) return source_(chunk);
  const std::size_t length = std::min(chunk.size(), end_ - taken_);
  std::memcpy(chunk.data(), input_.data() + taken_, length);
  taken_ += length;
  return length;
}

std::size_t DecompressingSource::readCompressed(std::span<char> chunk) {
  ZSTD_outBuffer output{chunk.data(), chunk.size(), 0};
  while (output.pos == 0) {
    // What the decompressor still holds back comes before new input is asked for.
    const bool isOver = taken_ == end_ && !fill();
    if (isOver && !isInFrame_) return 0;
    ZSTD_inBuffer input{input_.data() + taken_, end_ - taken_, 0};
    const std::size_t hint = ZSTD_decompressStream(context_, &output, &input);
    taken_ += input.pos;
    if (ZSTD_isError(hint) != 0) fail(std::string("damaged: ") + ZSTD_getErrorName(hint));
    isInFrame_ = hint != 0;
    if (isOver && isInFrame_ && output.pos == 0) fail("cut: it ends before its frame does");
  }
  return output.pos;
}

}  // namespace habitra
