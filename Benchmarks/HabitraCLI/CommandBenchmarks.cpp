// Whole commands as a person waits for them, from the start of the process to its end, on a store with four habits
// and 7,236 recorded days, beside the sqlite3 shell counting the tasks of the same store.

#include <QZDateTime/YYYYMMDD.h>
#include <Support/Program.h>
#include <Support/RatioReport.h>
#include <Support/TemporaryFolder.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

using habitra::benchmarks::runProgram;

/// A home of its own with the history in it.
class History {
 public:
  History() {
    write();
    runProgram(habitra({"import", csv()}));
    runProgram(habitra({"done", "Habit 1"}));
  }

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

  TemporaryFolder folder_;
};

const History& history() {
  static const History once;
  return once;
}

void measure(benchmark::State& state, const std::vector<std::string>& command) {
  for (auto unused : state) runProgram(command);
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
