#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONBytes.h>
#include <HabitraBackup/Document/JSONStream.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <exception>
#include <set>
#include <utility>

namespace habitra {

namespace {

constexpr std::size_t mostValuesAtOnce = 10'000;
constexpr std::size_t mostTextAtOnce = 16 * document_values::longestText;

using nlohmann::json;

void appendStep(std::string& to, std::string_view key) {
  if (!to.empty()) to += '.';
  to += qz::utf8::printable(key);
}

// The parser's events, built up into the values that are handed over. What is open is a row of frames; the place leads
// to the value that comes next.
class Builder final : public json::json_sax_t {
 public:
  Builder(JSONStreamHandler& handler, const JSONBytes& bytes) : handler_(handler), bytes_(bytes) {}

  bool null() override { return take(nullptr); }
  bool boolean(bool value) override { return take(value); }
  bool number_integer(number_integer_t value) override { return take(value); }
  bool number_unsigned(number_unsigned_t value) override { return take(value); }
  bool number_float(number_float_t value, const string_t& /*digits*/) override { return take(value); }
  bool string(string_t& text) override {
    refuseNUL(text);
    textLength_ += text.size();
    if (textLength_ > mostTextAtOnce) throw HabitraJSONError(place_.text(), "more than 256 MiB of text within one");
    return take(std::move(text));
  }
  bool binary(binary_t& /*bytes*/) override { return false; }

  bool start_object(std::size_t /*count*/) override { return begin(false); }
  bool start_array(std::size_t /*count*/) override { return begin(true); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }

  bool key(string_t& name) override {
    refuseNUL(name);
    Frame& frame = frames_.back();
    const bool isNew = frame.isOpen ? frame.keys.insert(name).second : !frame.tree.contains(name);
    place_.last().key = std::move(name);
    if (!isNew) throw HabitraJSONError(place_.text(), "this key stands in its object twice");
    return true;
  }

  bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const json::exception& error) override {
    throw HabitraJSONError(bytes_.line(), bytes_.column(), problem(error.what()));
  }

 private:
  struct Frame {
    bool isList;
    bool isOpen;
    json tree = {};                   // of one that is not open: what there is of it so far
    std::set<std::string> keys = {};  // of an open object
  };

  // Without the parser's own name for the error and without its place, which stands before this.
  static std::string problem(std::string_view what) {
    constexpr std::size_t longest = 200;
    for (const std::string_view before : {" - ", "] "}) {
      const auto found = what.find(before);
      if (found == std::string_view::npos) continue;
      what.remove_prefix(found + before.size());
      break;
    }
    return fmt::format("this is not JSON: {}", qz::utf8::printable(what, longest));
  }

  void refuseNUL(const std::string& text) const {
    if (text.find('\0') != std::string::npos)
      throw HabitraJSONError(place_.text(), fmt::format("{} holds a NUL, which is no text", qz::utf8::quoted(text)));
  }

  [[nodiscard]] bool isWithinOpen() const { return frames_.empty() || frames_.back().isOpen; }

  bool begin(bool isList) {
    if (frames_.size() == document_values::deepest)
      throw HabitraJSONError(place_.text(), fmt::format("deeper than {} levels", document_values::deepest));
    const bool isOpen = isWithinOpen() && handler_.opens(place_, isList);
    if (!isOpen) count();
    frames_.push_back({.isList = isList, .isOpen = isOpen, .tree = isList ? json::array() : json::object()});
    place_.enter(isList);
    return true;
  }

  bool end() {
    Frame frame = std::move(frames_.back());
    frames_.pop_back();
    place_.leave();
    if (!frame.isOpen) return put(std::move(frame.tree));
    handler_.ended(place_);
    next();
    return true;
  }

  bool take(json value) {
    count();
    return put(std::move(value));
  }

  bool put(json value) {
    if (isWithinOpen()) {
      handler_.value(place_, value);
      values_ = 0;
      textLength_ = 0;
    } else if (Frame& frame = frames_.back(); frame.isList) {
      frame.tree.push_back(std::move(value));
    } else {
      frame.tree[place_.last().key] = std::move(value);
    }
    next();
    return true;
  }

  void next() {
    if (!frames_.empty() && frames_.back().isList) ++place_.last().index;
  }

  void count() {
    if (++values_ > mostValuesAtOnce)
      throw HabitraJSONError(place_.text(), fmt::format("more than {} values within one", mostValuesAtOnce));
  }

  JSONStreamHandler& handler_;
  const JSONBytes& bytes_;
  std::vector<Frame> frames_;
  JSONPlace place_;
  std::size_t values_ = 0;      // in memory
  std::size_t textLength_ = 0;  // of those
};

}  // namespace

std::string JSONPlace::text(std::string_view member) const {
  std::string text;
  for (const Step& step : steps_) {
    if (step.isInList) {
      text += fmt::format("[{}]", step.index);
    } else {
      appendStep(text, step.key);
    }
  }
  if (!member.empty()) appendStep(text, member);
  return text;
}

std::string JSONPlace::kind(std::string_view member) const {
  std::string text;
  for (const Step& step : steps_) {
    if (step.isInList) {
      text += "[]";
    } else {
      appendStep(text, step.key);
    }
  }
  if (!member.empty()) appendStep(text, member);
  return text;
}

void readJSON(const ByteSource& source, JSONStreamHandler& handler) {
  JSONBytes bytes(source);
  Builder builder(handler, bytes);
  json::sax_parse(JSONByteIterator(bytes), JSONByteIterator(), &builder);
}

}  // namespace habitra
