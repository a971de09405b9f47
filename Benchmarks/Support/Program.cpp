#include <Support/Program.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <chrono>
#include <stdexcept>

extern char** environ;

namespace habitra::benchmarks {

ProgramRun runProgram(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  const auto begin = std::chrono::steady_clock::now();
  pid_t child = 0;
  const int failure = ::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (failure != 0 || ::wait4(child, &status, 0, &usage) != child || status != 0)
    throw std::runtime_error("cannot run " + words[0]);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  return {.seconds = time.count(), .peak = static_cast<double>(usage.ru_maxrss) / 1024};
}

}  // namespace habitra::benchmarks
