// Import and export of a million entries, as whole processes, beside the sqlite3 shell that takes the same file into a
// table with an index over habit and day, and gives it back. Takes minutes and two gigabytes of the folder for
// temporary files. An argument says how many rounds are made; medians are compared.

#include <QZDateTime/YYYYMMDD.h>
#include <Support/Program.h>
#include <Support/RatioReport.h>
#include <Support/TemporaryFolder.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using habitra::benchmarks::ProgramRun;
using habitra::benchmarks::runProgram;

constexpr int habits = 100;
constexpr int days = 10'000;  // of each, the last one the day before `now`
constexpr const char* now = "2024-01-31T12:00:00Z";

/// What is measured, in a folder of its own.
class Exchange {
 public:
  Exchange() { write(); }

  void round() {
    std::filesystem::remove(table());
    keep("shell import",
         runProgram({"sqlite3", table(),
                     "create table h(task_id, title, icon, entry_type, entry_date, entry_timestamp, quantity, "
                     "page, notes); create index i on h(task_id, entry_date);",
                     ".import --csv --skip 1 '" + csv() + "' h"}));
    std::filesystem::remove_all(home());
    keep("import", runProgram(habitra({"import", csv()})));
    keep("shell export", runProgram({"sqlite3", "-csv", "-header", table(), "select * from h"}));
    keep("export", runProgram(habitra({"export", "-"})));
    keep("document", runProgram(habitra({"export", "--format", "habitra", "-"})));
  }

  [[nodiscard]] std::optional<double> seconds(const std::string& name) {
    return median(runs_.at(name), &ProgramRun::seconds);
  }
  [[nodiscard]] double peak(const std::string& name) { return median(runs_.at(name), &ProgramRun::peak); }

 private:
  [[nodiscard]] std::string home() const { return folder_ / "home"; }
  [[nodiscard]] std::string table() const { return folder_ / "table.sqlite"; }
  [[nodiscard]] std::string csv() const { return folder_ / "history.csv"; }

  [[nodiscard]] std::vector<std::string> habitra(std::vector<std::string> words) const {
    std::vector<std::string> command{HABITRA_PROGRAM, "--home", home(), "--now", now, "--time-zone", "UTC"};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }

  void write() const {
    std::ofstream file(csv());
    file << "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n";
    unsigned noise = 12345;
    for (int habit = 0; habit < habits; ++habit) {
      qz::YYYYMMDD date = qz::YYYYMMDD(2024, 1, 31).add(-days);
      for (int day = 0; day < days; ++day, date = date.nextDay()) {
        noise = noise * 1664525u + 1013904223u;
        file << "018D5F3A-91B0-7C44-8E21-0000000" << 10000 + habit << ",Habit " << habit << ",ic_walk,"
             << (noise >> 16 & 3 ? "completed_manually" : "missed_auto") << ',' << date.intValue() << ','
             << date.debugDescription() << "T20:15:00Z,1.0," << habit % 4 + 1 << ",\n";
      }
    }
  }

  void keep(const std::string& name, const ProgramRun& run) {
    runs_[name].push_back(run);
    std::printf("%-14s %8.2f s %8.1f MiB\n", name.c_str(), run.seconds, run.peak);
    std::fflush(stdout);
  }

  static double median(const std::vector<ProgramRun>& runs, double ProgramRun::*figure) {
    std::vector<double> values;
    for (const ProgramRun& run : runs) values.push_back(run.*figure);
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
  }

  TemporaryFolder folder_;
  std::map<std::string, std::vector<ProgramRun>> runs_;
};

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
  if (rounds < 1) {
    std::fprintf(stderr, "usage: HabitraBackupBenchmarks [ROUNDS]\n");
    return 2;
  }
  Exchange exchange;
  for (int round = 0; round < rounds; ++round) exchange.round();
  const bool isFast =
      habitra::benchmarks::printRatios("figure (s, medians)",
                                       {{"import of CSV / shell's import", "import", "shell import", 3},
                                        {"export as CSV / shell's export", "export", "shell export", 1.5}},
                                       [&](const std::string& name) { return exchange.seconds(name); });
  // The log of one habit, in the 128 bytes that an entry of a document takes.
  const double largestLog = days * 128.0 / (1 << 20);
  const bool isSmall = habitra::benchmarks::printRatios(
      "figure (MiB, medians)",
      {{"peak of the import", "import", "MiB", 300},
       {"peak of the export as CSV", "export", "MiB", 50 + largestLog},
       {"peak of the export as a document", "document", "MiB", 50 + largestLog}},
      [&](const std::string& name) { return std::optional(name == "MiB" ? 1.0 : exchange.peak(name)); });
  return isFast && isSmall ? 0 : 1;
}
