#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

#include <filesystem>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra sample", "habitra sample ."};

void run(Session& session, const Arguments& arguments) {
  const std::filesystem::path folder = arguments.words.empty() ? std::string() : arguments.words.front();
  session.answer(WrittenSample{session.application().writeSample(folder).string()});
}

}  // namespace

constinit const Command sampleCommand{
    .verb = "sample",
    .summary = "Write a month of five habits to habitra-sample.csv, to see the columns and to try import with",
    .words = {WordsTaken::Number::atMostOne, "FOLDER", "where to; that for temporary files when none is named"},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
