#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

#include <fmt/ranges.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra add Read ten pages"};

void run(Session& session, const Arguments& arguments) {
  session.answer(AddedHabit{session.application().add(fmt::format("{}", fmt::join(arguments.words, " ")))});
}

}  // namespace

constinit const Command addCommand{
    .verb = "add",
    .summary = "Add a habit that is to be done every day",
    .words = {WordsTaken::Number::oneOrMore, "TITLE", "what it is called; words are joined by blanks"},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
