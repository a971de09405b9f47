#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr Option options[] = {dateOption};
constexpr std::string_view examples[] = {"habitra skip Run", "habitra skip Run --date -2"};

void run(Session& session, const Arguments& arguments) {
  const std::optional<qz::YYYYMMDD> day = session.day(arguments.option(dateOption.name));
  session.answer(MarkedHabits{session.application().skip(arguments.words, day)});
}

}  // namespace

constinit const Command skipCommand{
    .verb = "skip",
    .summary = "Skip habits, today or on another day, which neither adds to a streak nor breaks it",
    .words = {WordsTaken::Number::oneOrMore, "TASK",
              "a habit's title, a start of it that is unique, or its identifier"},
    .options = options,
    .examples = examples,
    .run = run};

}  // namespace habitra
