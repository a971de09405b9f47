#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

/// A forked process that runs a step and ends; it is killed with this object at the latest. While the step runs it may
/// tell that it got somewhere, and wait to be told to go on.
class ChildProcess {
 public:
  class Talk {
   public:
    explicit Talk(int in, int out) : in_(in), out_(out) {}
    void tell() const { (void)!::write(out_, "!", 1); }
    /// Gives false when the other side has gone.
    bool wait() const {
      char c = 0;
      return ::read(in_, &c, 1) == 1;
    }

   private:
    int in_;
    int out_;
  };

  template <typename Step>
  explicit ChildProcess(Step&& step) {
    if (::pipe(toChild_) != 0 || ::pipe(toParent_) != 0) throw std::runtime_error("no pipe");
    id_ = ::fork();
    if (id_ != 0) {
      ::close(std::exchange(toChild_[0], -1));
      ::close(std::exchange(toParent_[1], -1));
      return;
    }
    ::close(toChild_[1]);
    ::close(toParent_[0]);
    int code = 1;
    try {
      std::forward<Step>(step)(Talk(toChild_[0], toParent_[1]));
      code = 0;
    } catch (const std::exception& error) {
      ::fputs((std::string(error.what()) + "\n").c_str(), stderr);
    }
    ::_exit(code);
  }
  ~ChildProcess() {
    kill();
    for (const int end : {toChild_[1], toParent_[0]}) ::close(end);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  [[nodiscard]] pid_t id() const { return id_; }
  [[nodiscard]] Talk talk() const { return Talk(toParent_[0], toChild_[1]); }

  void kill() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    (void)end();
  }
  /// Waits for the end. Gives true when the step ran through.
  bool end() {
    int status = 0;
    const pid_t ended = ::waitpid(std::exchange(id_, -1), &status, 0);
    return ended > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  int toChild_[2] = {-1, -1};
  int toParent_[2] = {-1, -1};
  pid_t id_ = -1;
};
