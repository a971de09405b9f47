#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr Option options[] = {dateOption};
constexpr std::string_view examples[] = {R"(habitra done Meditate "Read ten pages")",
                                         "habitra done Meditate --date yesterday"};

void run(Session& session, const Arguments& arguments) {
  const std::optional<qz::YYYYMMDD> day = session.day(arguments.option(dateOption.name));
  session.answer(MarkedHabits{session.application().done(arguments.words, day)});
}

}  // namespace

constinit const Command doneCommand{.verb = "done",
                                    .summary = "Mark habits as done, today or on another day",
                                    .words = {WordsTaken::Number::oneOrMore, "TASK",
                                              "a habit's title, a start of it that is unique, or its identifier"},
                                    .options = options,
                                    .examples = examples,
                                    .run = run};

}  // namespace habitra
