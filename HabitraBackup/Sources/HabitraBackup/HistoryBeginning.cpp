#include <HabitraBackup/Files/ByteOrderMark.h>
#include <HabitraBackup/HistoryBeginning.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace habitra {

namespace {

constexpr std::string_view blanks = " \t\r\n";

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

}  // namespace

/// Goes through the source from its start and looks on where it comes to the end of what was seen.
class HistoryBeginning::Characters {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  Characters() = default;
  explicit Characters(HistoryBeginning& beginning) : beginning_(&beginning) {}

  char operator*() const { return beginning_->seen_[at_]; }
  Characters& operator++() {
    ++at_;
    return *this;
  }
  friend bool operator==(const Characters& a, const Characters& b) { return a.isAtEnd() == b.isAtEnd(); }

 private:
  [[nodiscard]] bool isAtEnd() const { return beginning_ == nullptr || !beginning_->has(at_); }

  HistoryBeginning* beginning_ = nullptr;
  std::size_t at_ = 0;
};

HistoryBeginning::HistoryBeginning(const ByteSource& source) : source_(source), form_(found()) {}

bool HistoryBeginning::has(std::size_t at) {
  constexpr std::size_t step = 4096;
  while (at >= seen_.size() && !isAtEnd_ && seen_.size() < foreign_limits::largestJSON) {
    const std::size_t before = seen_.size();
    seen_.resize(before + step);
    const std::size_t count = source_(std::span(seen_).subspan(before));
    seen_.resize(before + count);
    isAtEnd_ = count == 0;
  }
  return at < seen_.size();
}

std::string_view HistoryBeginning::firstLine() {
  constexpr std::size_t longestHeader = std::size_t{1} << 16U;
  std::size_t end = 0;
  while (end < longestHeader && has(end) && seen_[end] != '\n') ++end;
  std::string_view line = seen().substr(0, end);
  if (line.starts_with(byteOrderMark)) line.remove_prefix(byteOrderMark.size());
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

bool HistoryBeginning::isForeignJSON() {
  OwnerOfJSON owner;
  (void)nlohmann::json::sax_parse(Characters(*this), Characters(), &owner);
  return owner.isForeign();
}

HistoryForm HistoryBeginning::found() {
  constexpr std::string_view database("SQLite format 3\0", 16);
  (void)has(database.size() - 1);
  if (seen().starts_with(database)) return HistoryForm::database;
  if (seen().starts_with("PK\x03\x04") || seen().starts_with("PK\x05\x06")) return HistoryForm::archive;
  std::size_t first = seen().starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
  while (has(first) && blanks.find(seen_[first]) != std::string_view::npos) ++first;
  if (has(first) && seen_[first] == '{') return isForeignJSON() ? HistoryForm::foreignJSON : HistoryForm::document;
  return isTableOfLoop(firstLine()) ? HistoryForm::loopTable : HistoryForm::rows;
}

std::size_t HistoryBeginning::read(std::span<char> chunk) {
  if (taken_ == seen_.size()) {
    seen_ = {};
    taken_ = 0;
    return isAtEnd_ ? 0 : source_(chunk);
  }
  const std::size_t count = std::min(chunk.size(), seen_.size() - taken_);
  std::memcpy(chunk.data(), seen_.data() + taken_, count);
  taken_ += count;
  return count;
}

}  // namespace habitra
