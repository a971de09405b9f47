#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Complaint.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/StopSignals.h>

#include <utility>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra watch"};

void run(Session& session, const Arguments&) {
  Application& application = session.application();
  const StopSignals signals([&application] { application.stopWatching(); });
  bool isFirst = true;
  application.watch([&](const ProcessReport& report) {
    if (report.failure) {
      complain(*report.failure + "; tried again in a minute");
      return;
    }
    if (!std::exchange(isFirst, false) && report.changed == 0) return;
    session.answer(report);
    session.flush();
  });
}

}  // namespace

constinit const Command watchCommand{
    .verb = "watch",
    .summary = "Stay, and bring habits up to date as days begin and data come in, until Ctrl-C",
    .words = {},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
