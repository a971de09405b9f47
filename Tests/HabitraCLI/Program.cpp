#include "Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace {

int opened(const std::filesystem::path& file, int flags) {
  const int descriptor = ::open(file.c_str(), flags | O_CLOEXEC, 0600);
  if (descriptor < 0) throw std::runtime_error("cannot open " + file.string());
  return descriptor;
}

int pipeWithoutReader() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  ::close(ends[0]);
  return ends[1];
}

/// In the child: never returns. A negative descriptor stays closed.
[[noreturn]] void become(const std::vector<std::string>& words, int in, int out, int err) {
  const std::array<int, 3> given{in, out, err};
  for (int i = 0; i < 3; ++i) {
    const int descriptor = given[static_cast<std::size_t>(i)];
    if (descriptor < 0)
      ::close(i);
    else
      ::dup2(descriptor, i);
  }
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  ::execv(HABITRA_PROGRAM, arguments.data());
  ::_exit(127);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "exit " << outcome.exitCode << "\n" << outcome.out << "---\n" << outcome.err;
}

std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

Outcome Program::run(const std::vector<std::string>& words) {
  std::vector<std::string> all{"--home", home_, "--now", now_, "--time-zone", timeZone_};
  all.insert(all.end(), words.begin(), words.end());
  return runBare(all);
}

Outcome Program::runBare(const std::vector<std::string>& words) {
  std::vector<std::string> all{"habitra"};
  all.insert(all.end(), words.begin(), words.end());
  const int in = opened(write("stdin", input_), O_RDONLY);
  const int caught = opened(folder_ / "stdout", O_WRONLY | O_CREAT | O_TRUNC);
  const int err = opened(folder_ / "stderr", O_WRONLY | O_CREAT | O_TRUNC);
  const int other = output_ == Output::full         ? opened("/dev/full", O_WRONLY)
                    : output_ == Output::closedPipe ? pipeWithoutReader()
                                                    : -1;
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("HOME", folder_.path().c_str(), 1);
    ::unsetenv("HABITRA_HOME");
    ::unsetenv("XDG_DATA_HOME");
    become(all, in, output_ == Output::caught ? caught : other, err);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  for (const int descriptor : {in, caught, err, other}) {
    if (descriptor >= 0) ::close(descriptor);
  }
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), bytesOf(folder_ / "stdout"),
          bytesOf(folder_ / "stderr")};
}

std::filesystem::path Program::write(const std::string& name, const std::string& text) const {
  std::ofstream(folder_ / name, std::ios::binary) << text;
  return folder_ / name;
}

std::map<std::string, std::pair<std::size_t, std::size_t>> Program::homeContents() const {
  std::map<std::string, std::pair<std::size_t, std::size_t>> contents;
  if (!std::filesystem::exists(home_)) return contents;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home_)) {
    if (!entry.is_regular_file() || entry.path().string().ends_with("-shm")) continue;
    const std::string bytes = bytesOf(entry.path());
    contents.emplace(entry.path().filename(), std::pair(bytes.size(), std::hash<std::string>()(bytes)));
  }
  return contents;
}
