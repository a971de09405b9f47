#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// Where a value of a JSON text stands: the keys and places in lists that lead to it.
class JSONPlace {
 public:
  struct Step {
    bool isInList = false;
    std::string key;        ///< in an object
    std::size_t index = 0;  ///< in a list, from 0
  };

  [[nodiscard]] std::size_t depth() const { return steps_.size(); }
  [[nodiscard]] const Step& step(std::size_t depth) const { return steps_[depth]; }
  /// The key of the step at that depth; empty where that leads into a list.
  [[nodiscard]] std::string_view key(std::size_t depth) const { return steps_[depth].key; }

  /// "tasks[3].taskEntry[17]", with `member` as one more key where that is not empty.
  [[nodiscard]] std::string text(std::string_view member = {}) const;
  /// The same for all of a kind: "tasks[].taskEntry[]".
  [[nodiscard]] std::string kind(std::string_view member = {}) const;

  void enter(bool isList) { steps_.push_back({.isInList = isList, .key = {}, .index = 0}); }
  void leave() { steps_.pop_back(); }
  [[nodiscard]] Step& last() { return steps_.back(); }

 private:
  std::vector<Step> steps_;
};

/// What readJSON hands over to. What it throws ends the reading and reaches the caller.
class JSONStreamHandler {
 public:
  virtual ~JSONStreamHandler() = default;

  /// Whether the members of an object or list that begins here are to be handed over one by one. Asked only within what
  /// has been opened itself.
  virtual bool opens(const JSONPlace& place, bool isList) = 0;
  /// A value of what was opened, whole.
  virtual void value(const JSONPlace& place, const nlohmann::json& json) = 0;
  /// What was opened is at its end.
  virtual void ended(const JSONPlace& place) = 0;
};

/// Reads a JSON text, UTF-8 perhaps with a byte-order mark. What is in memory at a time is one value that is handed
/// over, of at most 10,000 values and 256 MiB of text within each other. Throws HabitraJSONError for what is no JSON, a
/// NUL, bytes that are not UTF-8, a key twice in one object, and what is deeper or longer than document_values says.
void readJSON(const ByteSource& source, JSONStreamHandler& handler);

}  // namespace habitra
