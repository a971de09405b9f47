#include <QZKit/Trap.h>

#include <unistd.h>
#include <array>
#include <charconv>
#include <cstdlib>

namespace qz {
namespace {

/// A line of bounded length, so that a trap needs no memory when memory is what has run out.
class Line {
 public:
  void append(std::string_view text) {
    for (const char c : text.substr(0, buffer_.size() - 1 - length_)) buffer_[length_++] = c == '\n' ? ' ' : c;
  }

  void append(std::uint64_t number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    append(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
  }

  void writeToStandardError() {
    buffer_[length_++] = '\n';
    // Nothing is left to do when the line cannot be written: the program stops either way.
    if (::write(STDERR_FILENO, buffer_.data(), length_) < 0) return;
  }

 private:
  std::array<char, 512> buffer_{};
  std::size_t length_ = 0;
};

}  // namespace

void trap(std::string_view what, std::string_view value, Place place) noexcept {
  Line line;
  line.append("habitra: stopped: ");
  line.append(what);
  if (!value.empty()) {
    line.append(" (");
    line.append(value);
    line.append(")");
  }
  const std::string_view path = place.file;
  line.append(" at ");
  line.append(path.substr(path.rfind('/') + 1));
  line.append(":");
  line.append(std::uint64_t{place.line});
  line.writeToStandardError();
  std::abort();
}

void trap(std::string_view what, std::int64_t value, Place place) noexcept {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  trap(what, std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())), place);
}

}  // namespace qz
