#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra process"};

void run(Session& session, const Arguments&) { session.answer(session.application().process()); }

}  // namespace

constinit const Command processCommand{.verb = "process",
                                       .summary = "Bring every habit up to date now, and say what changed",
                                       .words = {},
                                       .options = {},
                                       .examples = examples,
                                       .run = run};

}  // namespace habitra
