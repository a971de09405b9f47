#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra list", "habitra list --json"};

void run(Session& session, const Arguments&) {
  session.answer(HabitList{session.application().list()});
  session.catchUp();
}

}  // namespace

constinit const Command listCommand{.verb = "list",
                                    .summary = "All habits with their streaks",
                                    .words = {},
                                    .options = {},
                                    .examples = examples,
                                    .run = run};

}  // namespace habitra
