#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

#include <iostream>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra health import steps.csv", "habitra health import - < steps.csv"};

void run(Session& session, const Arguments& arguments) {
  const std::string& file = arguments.words.front();
  Application& application = session.application();
  std::ios::sync_with_stdio(false);  // in step with stdio, a failing read would look like the end of the input
  session.answer(ImportedSamples{file == "-" ? application.importHealthSamples(std::cin, "standard input")
                                             : application.importHealthSamples(std::filesystem::path(file))});
}

}  // namespace

constinit const Command healthImportCommand{
    .verb = "health import",
    .summary = "Bring in health samples from a CSV file; twice is harmless",
    .words = {WordsTaken::Number::one, "FILE", "the file, or - for standard input"},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
