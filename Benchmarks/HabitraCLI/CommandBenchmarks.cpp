// Whole commands as a person waits for them, from the start of the process to its end, on a store with four habits
// and 7,236 recorded days, beside the sqlite3 shell counting the tasks of the same store.

#include <QZDateTime/YYYYMMDD.h>
#include <Support/RatioReport.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace {

/// Runs a program with its output thrown away and waits for its end.
void run(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failure = ::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (failure != 0 || ::waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error("cannot run " + words[0]);
}

/// A home of its own with the history in it, removed at the end.
class History {
 public:
  History() {
    std::string pattern = std::filesystem::temp_directory_path() / "habitra-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = pattern;
    write();
    run(habitra({"import", csv()}));
    run(habitra({"done", "Habit 1"}));
  }
  ~History() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  History(const History&) = delete;
  History& operator=(const History&) = delete;

  [[nodiscard]] std::vector<std::string> habitra(std::vector<std::string> words) const {
    std::vector<std::string> command{HABITRA_PROGRAM, "--home", (folder_ / "home").string()};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }
  [[nodiscard]] std::string store() const { return folder_ / "home" / "Habitra-Local.sqlite"; }

 private:
  [[nodiscard]] std::string csv() const { return folder_ / "history.csv"; }

  /// 1,809 days of each habit, from 2019-01-01 on, with about a third of them missed.
  void write() const {
    std::ofstream file(csv());
    file << "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n";
    unsigned noise = 12345;
    for (int habit = 1; habit <= 4; ++habit) {
      for (int day = 0; day < 1809; ++day) {
        const qz::YYYYMMDD date = qz::YYYYMMDD(2019, 1, 1).add(day);
        noise = noise * 1664525u + 1013904223u;
        file << ",Habit " << habit << ",ic_walk," << (noise >> 16 & 3 ? "completed_auto" : "missed_auto") << ','
             << date.intValue() << ",,0.5," << habit % 2 + 1 << ",\n";
      }
    }
  }

  std::filesystem::path folder_;
};

const History& history() {
  static const History once;
  return once;
}

void measure(benchmark::State& state, const std::vector<std::string>& command) {
  for (auto unused : state) run(command);
  state.SetItemsProcessed(state.iterations());
}

void sqlite3Count(benchmark::State& state) {
  measure(state, {"sqlite3", history().store(), "select count(*) from TaskEntity"});
}
void list(benchmark::State& state) { measure(state, history().habitra({"list"})); }
void listJSON(benchmark::State& state) { measure(state, history().habitra({"list", "--json"})); }
void today(benchmark::State& state) { measure(state, history().habitra({"today"})); }
void help(benchmark::State& state) { measure(state, history().habitra({"--help"})); }

BENCHMARK(sqlite3Count)->UseRealTime();
BENCHMARK(list)->UseRealTime();
BENCHMARK(listJSON)->UseRealTime();
BENCHMARK(today)->UseRealTime();
BENCHMARK(help)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  return habitra::benchmarks::runWithRatios(argc, argv,
                                            {{"habitra list / sqlite3 count", "list", "sqlite3Count", 3},
                                             {"habitra list --json / sqlite3 count", "listJSON", "sqlite3Count", 3},
                                             {"habitra today / sqlite3 count", "today", "sqlite3Count", 3}});
}
