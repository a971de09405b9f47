#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra", "habitra today --now 2024-01-31"};

void run(Session& session, const Arguments&) {
  Application& application = session.application();
  session.answer(TodayList::of(application.today(), application.list()));
  session.catchUp();
}

}  // namespace

constinit const Command todayCommand{.verb = "today",
                                     .summary = "What is to do today, and what is done",
                                     .words = {},
                                     .options = {},
                                     .examples = examples,
                                     .run = run};

}  // namespace habitra
