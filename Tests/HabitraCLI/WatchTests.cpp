#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "Program.h"

namespace {

/// The program as a child that stays; it is killed with this object at the latest.
class Staying {
 public:
  explicit Staying(std::vector<std::string> words) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    child_ = ::fork();
    if (child_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::execv(HABITRA_PROGRAM, arguments.data());
      ::_exit(127);
    }
    ::close(ends[1]);
    out_ = ends[0];
  }
  ~Staying() {
    if (child_ > 0) (void)end(SIGKILL);
    ::close(out_);
  }
  Staying(const Staying&) = delete;
  Staying& operator=(const Staying&) = delete;

  /// The next line that it says; empty when it has ended.
  std::string line() {
    std::string text;
    for (char c = 0; ::read(out_, &c, 1) == 1 && c != '\n';) text += c;
    return text;
  }

  /// Sends the signal and gives the exit code that follows, negative for a signal that killed it.
  int end(int signal) {
    int status = 0;
    ::kill(child_, signal);
    ::waitpid(std::exchange(child_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t child_ = -1;
  int out_ = -1;
};

class WatchTests : public Program {};

TEST_F(WatchTests, staysAndFollowsOtherProgramsUntilItIsToldToEnd) {
  ASSERT_EQ(run({"add", "Read"}).exitCode, 0);
  const std::string later = "2024-02-02T10:00:00Z";
  const std::vector<std::string> words{"habitra", "--home", home_, "--now", later, "--time-zone", timeZone_, "watch"};
  {
    Staying watch(words);
    EXPECT_EQ(watch.line(), "1 habit up to date: 1 changed, 2 days filled in");
    // What a program adds whose clock is behind is left to be processed.
    ASSERT_EQ(run({"add", "Run"}).exitCode, 0);
    EXPECT_EQ(watch.line(), "2 habits up to date: 1 changed, 2 days filled in");
    EXPECT_EQ(watch.end(SIGTERM), 0);
  }
  Staying again(words);
  EXPECT_EQ(again.line(), "2 habits up to date");
  EXPECT_EQ(again.end(SIGINT), 0);
  now_ = later;
  EXPECT_EQ(run({"process"}), says("2 habits up to date\n"));
}

}  // namespace
