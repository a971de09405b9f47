#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra export history.csv", "habitra export - | head"};

void run(Session& session, const Arguments& arguments) {
  const std::string& file = arguments.words.front();
  if (file == "-")
    session.application().exportHistory(session.document());
  else
    session.answer(ExportedHistory{session.application().exportHistory(std::filesystem::path(file)), file});
}

}  // namespace

constinit const Command exportCommand{.verb = "export",
                                      .summary = "Write the whole history to a CSV file",
                                      .words = {WordsTaken::Number::one, "FILE", "the file, or - for standard output"},
                                      .options = {},
                                      .examples = examples,
                                      .run = run};

}  // namespace habitra
