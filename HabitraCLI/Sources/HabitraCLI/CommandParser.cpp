#include <HabitraApp/TaskLookup.h>
#include <HabitraCLI/CommandParser.h>
#include <HabitraCLI/UsageError.h>

#include <fmt/format.h>
#include <algorithm>
#include <CLI/CLI.hpp>
#include <map>

namespace habitra {
namespace {

/// A word that the library would take for the end of a verb's words, and what stands for it while the library reads: no
/// word of a command line can hold a NUL.
constexpr std::string_view endOfVerb = "++";
constexpr std::string_view endOfVerbAsWord("++\0", 3);

std::string asWritten(const std::string& word) { return word == endOfVerbAsWord ? std::string(endOfVerb) : word; }

/// The library's tree over the descriptions. Only what the library is good at is left to it: telling verbs, options,
/// their values and words apart. What is missing or too much is said in our own words.
class Tree {
 public:
  explicit Tree(std::span<const Command* const> commands) : commands_(commands) {
    app_.set_help_flag();  // --help is an option like the others: it may follow the verb
    app_.allow_extras();
    app_.require_subcommand(0, 1);
    for (const Option& option : globalOptions) add(app_, option);
    for (const Command* command : commands) {
      CLI::App* sub = place(command->verb);
      places_.push_back(sub);
      for (const Option& option : command->options) add(*sub, option);
      if (command->words.number != WordsTaken::Number::none) {
        // A fixed, large number instead of "any": for lists without end the library takes "[a]" apart.
        sub->add_option(std::string(command->words.name))
            ->expected(1 << 20)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
      }
    }
  }

  ParsedLine parse(std::vector<std::string> words) {
    refuseEmptyValues(words);
    std::replace(words.begin(), words.end(), std::string(endOfVerb), std::string(endOfVerbAsWord));
    std::reverse(words.begin(), words.end());
    try {
      app_.parse(std::move(words));
    } catch (const CLI::ArgumentMismatch& error) {
      // The text begins with the option's name and a colon.
      const std::string_view text = error.what();
      throw missingValue(text.substr(0, text.find(':')));
    } catch (const CLI::ParseError& error) {
      throw UsageError(error.what(), verb());
    }
    refuseExtras();
    return read();
  }

 private:
  /// Where a verb stands in the tree; the first of two words is a place of its own.
  CLI::App* place(std::string_view verb) {
    const std::size_t blank = verb.find(' ');
    if (blank == std::string_view::npos) return addVerb(app_, std::string(verb));
    CLI::App*& group = groups_[std::string(verb.substr(0, blank))];
    if (group == nullptr) {
      group = addVerb(app_, std::string(verb.substr(0, blank)));
      group->allow_extras();
      group->require_subcommand(0, 1);
    }
    return addVerb(*group, std::string(verb.substr(blank + 1)));
  }

  static CLI::App* addVerb(CLI::App& parent, const std::string& word) {
    CLI::App* sub = parent.add_subcommand(word);
    sub->set_help_flag();
    sub->fallthrough();
    return sub;
  }

  static void add(CLI::App& app, const Option& option) {
    const std::string name(option.name);
    if (option.value.empty())
      app.add_flag(name == "--help" ? "-h,--help" : name);
    else
      app.add_option(name)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }

  [[nodiscard]] const Command* command() const {
    for (std::size_t at = 0; at < commands_.size(); ++at) {
      if (places_[at]->parsed()) return commands_[at];
    }
    return nullptr;
  }

  [[nodiscard]] std::string_view verb() const {
    const Command* chosen = command();
    return chosen == nullptr ? std::string_view() : chosen->verb;
  }

  [[nodiscard]] static const Option* find(std::span<const Option> options, std::string_view name) {
    const auto found = std::find_if(options.begin(), options.end(), [&](const Option& o) { return o.name == name; });
    return found == options.end() ? nullptr : &*found;
  }

  UsageError missingValue(std::string_view name) const {
    const Option* option = find(globalOptions, name);
    for (const Command* command : commands_) {
      if (option == nullptr) option = find(command->options, name);
    }
    if (option == nullptr) return UsageError(fmt::format("option '{}' is not complete", name), verb());
    return UsageError(fmt::format("option '{}' needs a value, {}", name, option->value), verb());
  }

  /// "--home=" would otherwise take the next word for its value.
  void refuseEmptyValues(const std::vector<std::string>& words) const {
    for (const std::string& word : words) {
      if (word == "--") return;
      if (word.starts_with("--") && word.find('=') == word.size() - 1) {
        const std::string_view name = std::string_view(word).substr(0, word.size() - 1);
        if (find(globalOptions, name) != nullptr) throw missingValue(name);
      }
    }
  }

  /// The first word of a verb of two, where the second is none or missing.
  [[nodiscard]] std::string_view loneGroup() const {
    if (command() != nullptr) return {};
    const auto found = std::find_if(groups_.begin(), groups_.end(), [](const auto& g) { return g.second->parsed(); });
    return found == groups_.end() ? std::string_view() : found->first;
  }

  void refuseExtras() const {
    const Command* chosen = command();
    for (const std::string& word : app_.remaining(true)) {
      const std::string extra = asWritten(word);
      if (extra == "--" && chosen != nullptr) continue;
      if (extra.size() > 1 && extra[0] == '-') refuseOption(extra, chosen);
      if (!loneGroup().empty()) refuseGroup(fmt::format("{} {}", loneGroup(), extra));
      if (chosen == nullptr) refuseVerb(extra);
      throw UsageError(fmt::format("'{}' takes no '{}'", chosen->verb, extra), chosen->verb);
    }
  }

  [[noreturn]] void refuseOption(std::string_view extra, const Command* chosen) const {
    const std::string_view name = extra.substr(0, extra.find('='));
    std::vector<std::string> known;
    if (chosen != nullptr) {
      for (const Option& option : chosen->options) known.emplace_back(option.name);
    }
    for (const Option& option : globalOptions) known.emplace_back(option.name);
    throw UsageError(fmt::format("unknown option '{}'{}", name, didYouMean(name, known)), verb());
  }

  [[noreturn]] void refuseVerb(std::string_view word) const {
    std::vector<std::string> known;
    for (const Command* command : commands_) known.emplace_back(command->verb);
    throw UsageError(fmt::format("unknown command '{}'{}", word, didYouMean(word, known)));
  }

  [[noreturn]] void refuseGroup(std::string_view words) const {
    std::string known;
    for (const Command* command : commands_) {
      if (command->verb.starts_with(std::string(loneGroup()) + " "))
        known += fmt::format("{}'{}'", known.empty() ? "" : " or ", command->verb);
    }
    throw UsageError(fmt::format("unknown command '{}', did you mean {}?", words, known));
  }

  [[nodiscard]] static std::optional<std::string> value(const CLI::App& app, std::string_view name) {
    const CLI::Option* option = app.get_option(std::string(name));
    return option->empty() ? std::nullopt : std::optional(asWritten(option->results().back()));
  }

  [[nodiscard]] bool flag(std::string_view name) const {
    const auto given = value(app_, name);
    if (given && *given != "true") throw UsageError(fmt::format("option '{}' takes no value", name), verb());
    return given.has_value();
  }

  [[nodiscard]] ParsedLine read() const {
    ParsedLine line;
    line.global = {.home = value(app_, "--home"),
                   .now = value(app_, "--now"),
                   .timeZone = value(app_, "--time-zone"),
                   .json = flag("--json"),
                   .verbose = flag("--verbose"),
                   .version = flag("--version"),
                   .help = flag("--help")};
    line.command = command();
    if (!loneGroup().empty() && !line.global.help && !line.global.version) refuseGroup(loneGroup());
    if (line.command == nullptr) return line;
    const CLI::App& sub = **std::find_if(places_.begin(), places_.end(), [](const auto* app) { return app->parsed(); });
    for (const Option& option : line.command->options) {
      if (const auto given = value(sub, option.name)) line.arguments.options.emplace(option.name, *given);
    }
    const WordsTaken& words = line.command->words;
    if (words.number != WordsTaken::Number::none) {
      for (const std::string& word : sub.get_option(std::string(words.name))->results())
        line.arguments.words.push_back(asWritten(word));
    }
    if (!line.global.help && !line.global.version) checkNumber(*line.command, line.arguments.words);
    return line;
  }

  static void checkNumber(const Command& command, const std::vector<std::string>& words) {
    if (command.words.number == WordsTaken::Number::none) return;
    const WordsTaken::Number number = command.words.number;
    if (words.empty() && number != WordsTaken::Number::atMostOne)
      throw UsageError(fmt::format("'{}' needs a {}", command.verb, command.words.name), command.verb);
    if (number != WordsTaken::Number::oneOrMore && words.size() > 1) {
      throw UsageError(fmt::format("'{}' takes one {}, '{}' is too much (quote a name that has blanks)", command.verb,
                                   command.words.name, words[1]),
                       command.verb);
    }
  }

  std::span<const Command* const> commands_;
  std::vector<CLI::App*> places_;            // of the commands
  std::map<std::string, CLI::App*> groups_;  // of verbs of two words, by the first
  CLI::App app_;
};

}  // namespace

ParsedLine parseCommandLine(std::vector<std::string> words, std::span<const Command* const> commands) {
  return Tree(commands).parse(std::move(words));
}

}  // namespace habitra
