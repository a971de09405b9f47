#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/UsageError.h>

#include <fmt/format.h>
#include <iostream>

namespace habitra {
namespace {

constexpr Option options[] = {
    {"--strategy", "HOW",
     "what becomes of habits that are here: merge (as usual), overwrite, skip, or new for copies"}};
constexpr std::string_view examples[] = {"habitra import history.csv", "habitra import - < history.csv",
                                         "habitra import everything.habitra.zst", "habitra import LoopHabitsCSV.zip",
                                         "habitra import history.csv --strategy skip"};

ImportStrategy strategyFrom(const std::string& text) {
  if (const auto strategy = fromRawValue<ImportStrategy>(std::string_view(text))) return *strategy;
  throw UsageError(fmt::format("'{}' is no strategy: write merge, overwrite, skip or new", text), "import");
}

void run(Session& session, const Arguments& arguments) {
  const std::string& file = arguments.words.front();
  const auto option = arguments.option("--strategy");
  const ImportStrategy strategy = option ? strategyFrom(*option) : ImportStrategy::merge;
  Application& application = session.application();
  std::ios::sync_with_stdio(false);  // in step with stdio, a failing read would look like the end of the input
  session.answer(ImportedHistory{session.withProgress([&] {
    return file == "-" ? application.importHistory(std::cin, "standard input", strategy)
                       : application.importHistory(std::filesystem::path(file), strategy);
  })});
}

}  // namespace

constinit const Command importCommand{.verb = "import",
                                      .summary = "Bring in a history, also another tracker's; twice is harmless",
                                      .words = {WordsTaken::Number::one, "FILE",
                                                "a CSV file, a backup document, or what Loop, Tickmate, harsh or "
                                                "beaverhabits has written; - for standard input"},
                                      .options = options,
                                      .examples = examples,
                                      .run = run};

}  // namespace habitra
