#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

class Session;

/// What a person wrote after the verb, global options left out.
struct Arguments {
  std::vector<std::string> words;
  std::map<std::string_view, std::string> options;  ///< by the option's name, "--date"

  [[nodiscard]] std::optional<std::string> option(std::string_view name) const {
    const auto found = options.find(name);
    return found == options.end() ? std::nullopt : std::optional(found->second);
  }
};

/// An option, global or of one verb.
struct Option {
  std::string_view name;   ///< "--date"
  std::string_view value;  ///< what stands for its value in the help, "DAY"; empty for one that takes none
  std::string_view help;
};

/// The words that a verb takes.
struct WordsTaken {
  enum class Number { none, atMostOne, one, oneOrMore };
  Number number = Number::none;
  std::string_view name;  ///< "TASK"
  std::string_view help;
};

/// One verb: everything that the parser, the help and the program need to know of it. A plain description without
/// behaviour of its own but for `run`.
struct Command {
  std::string_view verb;     ///< one word, "done", or two where several commands belong together, "health import"
  std::string_view summary;  ///< one line for the list of verbs
  WordsTaken words;
  std::span<const Option> options;
  std::span<const std::string_view> examples;  ///< whole command lines
  void (*run)(Session& session, const Arguments& arguments);
};

}  // namespace habitra
