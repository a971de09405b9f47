#include <HabitraCLI/GlobalOptions.h>
#include <HabitraCLI/Help.h>

#include <fmt/format.h>
#include <algorithm>
#include <utility>
#include <vector>

namespace habitra {
namespace {

using Rows = std::vector<std::pair<std::string, std::string_view>>;

std::string columns(const Rows& rows) {
  std::size_t width = 0;
  for (const auto& [left, right] : rows) width = std::max(width, left.size());
  std::string text;
  for (const auto& [left, right] : rows) text += fmt::format("  {:<{}}  {}\n", left, width, right);
  return text;
}

Rows rowsOf(std::span<const Option> options) {
  Rows rows;
  for (const Option& option : options)
    rows.emplace_back(fmt::format("{}{}{}", option.name, option.value.empty() ? "" : " ", option.value), option.help);
  return rows;
}

std::string wordsOf(const Command& command) {
  switch (command.words.number) {
    case WordsTaken::Number::none: return {};
    case WordsTaken::Number::atMostOne: return fmt::format(" [{}]", command.words.name);
    case WordsTaken::Number::one: return fmt::format(" {}", command.words.name);
    case WordsTaken::Number::oneOrMore: return fmt::format(" {}...", command.words.name);
  }
  return {};
}

}  // namespace

std::string generalHelp(std::span<const Command* const> commands) {
  Rows verbs;
  for (const Command* command : commands)
    verbs.emplace_back(fmt::format("{}{}", command->verb, wordsOf(*command)), command->summary);
  return fmt::format(
      "Habitra keeps your habits and counts their streaks.\n\n"
      "Usage: habitra [OPTION...] [VERB] [ARGUMENT...]\n\n"
      "Verbs (without one: today)\n{}\n"
      "Options, before or after the verb\n{}\n"
      "HABITRA_HOME in the environment stands for --home, NO_COLOR switches colours off.\n"
      "'habitra VERB --help' says more about a verb.\n",
      columns(verbs), columns(rowsOf(globalOptions)));
}

std::string commandHelp(const Command& command) {
  std::string text = fmt::format("Usage: habitra {}{}{}\n\n{}.\n", command.verb, wordsOf(command),
                                 command.options.empty() ? "" : " [OPTION...]", command.summary);
  if (command.words.number != WordsTaken::Number::none)
    text += "\nArguments\n" + columns({{std::string(command.words.name), command.words.help}});
  if (!command.options.empty()) text += "\nOptions\n" + columns(rowsOf(command.options));
  text += "\nExamples\n";
  for (const std::string_view example : command.examples) text += fmt::format("  {}\n", example);
  text += "\n'habitra --help' lists the options that every verb takes.\n";
  return text;
}

}  // namespace habitra
