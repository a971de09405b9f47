#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>

#include <filesystem>
#include <system_error>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra restore", "habitra restore 2024-01-31",
                                         "habitra restore everything.habitra"};

/// A file whose name could be a day is meant by "./20240131".
bool isFile(const std::string& word) {
  if (word.find_first_of("./") != std::string::npos) return true;
  const bool couldBeDay = word.find_first_not_of("0123456789-") == std::string::npos;
  std::error_code error;
  return !couldBeDay && std::filesystem::exists(word, error);
}

void run(Session& session, const Arguments& arguments) {
  Application& application = session.application();
  if (arguments.words.empty()) return session.answer(BackupList{application.backups()});
  const std::string& word = arguments.words.front();
  session.answer(RestoredHistory{session.withProgress([&] {
    return isFile(word) ? application.restore(std::filesystem::path(word))
                        : application.restore(session.day(word).value());
  })});
}

}  // namespace

constinit const Command restoreCommand{
    .verb = "restore",
    .summary = "List the backups of the last months, or go back to one of them",
    .words = {WordsTaken::Number::atMostOne, "DAY", "the day of the backup, 2024-01-31, or a .habitra file"},
    .options = {},
    .examples = examples,
    .run = run};

}  // namespace habitra
