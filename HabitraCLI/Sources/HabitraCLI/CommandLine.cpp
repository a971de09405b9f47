#include <HabitraApp/TaskLookup.h>
#include <HabitraCLI/CommandLine.h>
#include <HabitraCLI/CommandParser.h>
#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Complaint.h>
#include <HabitraCLI/Help.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/StandardOutput.h>
#include <HabitraCLI/UsageError.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <csignal>
#include <exception>
#include <string_view>

namespace habitra {
namespace {

enum ExitCode : int { succeeded = 0, failed = 1, misunderstood = 2 };

/// A file that is opened must never get the number of a standard stream that the parent left closed: what is printed
/// would end up in it. Such a stream is opened the wrong way round, so that using it still fails.
void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) == -1)
      static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

/// A closed pipe and a full disk are to be seen as failed writes, not to end the process in the middle of its work.
void ignoreWriteSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void complainOfUsage(const UsageError& error) {
  const std::string verb = error.verb().empty() ? std::string() : error.verb() + " ";
  complain(fmt::format("{} (see 'habitra {}--help')", error.what(), verb));
}

void answer(const ParsedLine& line, StandardOutput& output) {
  if (line.global.version) {
    output.write("habitra " HABITRA_VERSION "\n");
  } else if (line.global.help) {
    output.write(line.command == nullptr ? generalHelp(allCommands()) : commandHelp(*line.command));
  } else {
    Session session(line.global, output);
    const Command& command = line.command == nullptr ? todayCommand : *line.command;
    try {
      command.run(session, line.arguments);
      session.finish();
    } catch (const UsageError& error) {
      throw UsageError(error.what(), command.verb);
    } catch (const TaskNameError& error) {
      throw UsageError(error.what(), command.verb);
    }
  }
  output.flush();
}

}  // namespace

int runCommandLine(const std::vector<std::string>& words) {
  occupyStandardDescriptors();
  ignoreWriteSignals();
  StandardOutput output(STDOUT_FILENO);
  try {
    answer(parseCommandLine({words.begin() + (words.empty() ? 0 : 1), words.end()}, allCommands()), output);
    return succeeded;
  } catch (const UsageError& error) {
    complainOfUsage(error);
    return misunderstood;
  } catch (const std::exception& error) {
    if (output.readerIsGone()) return succeeded;
    complain(error.what());
    return failed;
  }
}

}  // namespace habitra
