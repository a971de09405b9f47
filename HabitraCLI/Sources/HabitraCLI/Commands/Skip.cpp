#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra skip Run"};

void run(Session& session, const Arguments& arguments) {
  session.answer(MarkedHabits{session.application().skip(arguments.words)});
}

}  // namespace

constinit const Command skipCommand{.verb = "skip",
                                    .summary = "Skip habits today, which neither adds to a streak nor breaks it",
                                    .words = {WordsTaken::Number::oneOrMore, "TASK",
                                              "a habit's title, a start of it that is unique, or its identifier"},
                                    .options = {},
                                    .examples = examples,
                                    .run = run};

}  // namespace habitra
