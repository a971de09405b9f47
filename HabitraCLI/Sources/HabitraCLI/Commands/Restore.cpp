#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

#include <filesystem>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra restore", "habitra restore 2024-01-31",
                                         "habitra restore everything.habitra"};

void run(Session& session, const Arguments& arguments) {
  Application& application = session.application();
  if (arguments.words.empty()) return session.answer(BackupList{application.backups()});
  const std::string& word = arguments.words.front();
  const bool isFile = word.find_first_of("./") != std::string::npos;
  session.answer(RestoredHistory{isFile ? application.restore(std::filesystem::path(word))
                                        : application.restore(session.day(word).value())});
}

}  // namespace

constinit const Command restoreCommand{
    .verb = "restore",
    .summary = "List the backups of the last months, or go back to one of them",
    .words = {WordsTaken::Number::atMostOne, "DAY", "the day of the backup, 2024-01-31, or a file that export wrote"},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
