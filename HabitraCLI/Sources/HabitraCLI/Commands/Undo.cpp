#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr Option options[] = {dateOption};
constexpr std::string_view examples[] = {"habitra undo Meditate", "habitra undo Meditate --date yesterday"};

void run(Session& session, const Arguments& arguments) {
  const std::optional<qz::YYYYMMDD> day = session.day(arguments.option(dateOption.name));
  session.answer(UndoneHabit{session.application().undo(arguments.words.front(), day), day});
}

}  // namespace

constinit const Command undoCommand{
    .verb = "undo",
    .summary = "Take back what was recorded for a habit today, or on another day",
    .words = {WordsTaken::Number::one, "TASK", "the habit's title, a start of it that is unique, or its identifier"},
    .options = options,
    .examples = examples,
    .run = run};

}  // namespace habitra
