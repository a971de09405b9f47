#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {R"(habitra done Meditate "Read ten pages")"};

void run(Session& session, const Arguments& arguments) {
  session.answer(MarkedHabits{session.application().done(arguments.words)});
}

}  // namespace

constinit const Command doneCommand{.verb = "done",
                                    .summary = "Mark habits as done for today",
                                    .words = {WordsTaken::Number::oneOrMore, "TASK",
                                              "a habit's title, a start of it that is unique, or its identifier"},
                                    .options = {},
                                    .examples = examples,
                                    .run = run};

}  // namespace habitra
