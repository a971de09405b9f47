#include <HabitraCLI/StandardOutput.h>
#include <QZKit/Error.h>

#include <fmt/format.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace habitra {
namespace {

constexpr std::size_t bufferSize = 64 * 1024;

}  // namespace

StandardOutput::Buffer::Buffer(int descriptor) : descriptor_(descriptor), bytes_(bufferSize) {
  setp(bytes_.data(), bytes_.data() + bytes_.size());
}

StandardOutput::Buffer::int_type StandardOutput::Buffer::overflow(int_type character) {
  if (!writeOut()) return traits_type::eof();
  if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
  return sputc(traits_type::to_char_type(character));
}

int StandardOutput::Buffer::sync() { return writeOut() ? 0 : -1; }

bool StandardOutput::Buffer::writeOut() {
  const char* from = pbase();
  while (error_ == 0 && from < pptr()) {
    const ssize_t written = ::write(descriptor_, from, static_cast<std::size_t>(pptr() - from));
    if (written >= 0)
      from += written;
    else if (errno != EINTR)
      error_ = errno;
  }
  setp(bytes_.data(), bytes_.data() + bytes_.size());
  return error_ == 0;
}

StandardOutput::StandardOutput(int descriptor) : buffer_(descriptor), stream_(&buffer_) {}

void StandardOutput::write(std::string_view text) {
  stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
  check();
}

void StandardOutput::flush() {
  stream_.flush();
  check();
}

bool StandardOutput::readerIsGone() const { return buffer_.error() == EPIPE; }

void StandardOutput::check() const {
  if (buffer_.error() != 0)
    throw qz::Error(fmt::format("cannot write to standard output: {}", std::strerror(buffer_.error())));
}

}  // namespace habitra
