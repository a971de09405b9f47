#include <Support/RatioReport.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

namespace habitra::benchmarks {
namespace {

/// Shows runs as usual and keeps every repetition's time per item.
class RatioReport : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    benchmark::ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      const auto items = run.counters.find("items_per_second");
      if (run.run_type != Run::RT_Iteration || items == run.counters.end()) continue;
      nanoseconds_[run.run_name.function_name].push_back(1e9 / items->second.value);
    }
  }

  /// Of all repetitions; none of a benchmark that was filtered out.
  [[nodiscard]] std::optional<double> median(const std::string& name) const {
    const auto found = nanoseconds_.find(name);
    if (found == nanoseconds_.end()) return std::nullopt;
    std::vector<double> times = found->second;
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
  }

 private:
  std::map<std::string, std::vector<double>> nanoseconds_;  // per item, by benchmark
};

}  // namespace

bool printRatios(const std::string& heading, const std::vector<Ratio>& ratios,
                 const std::function<std::optional<double>(const std::string& name)>& valueOf) {
  bool holds = true;
  std::printf("\n%-46s %11s %11s %7s %7s\n", heading.c_str(), "ours", "yardstick", "ratio", "bound");
  for (const Ratio& ratio : ratios) {
    const std::optional<double> ours = valueOf(ratio.ours);
    const std::optional<double> yardstick = valueOf(ratio.yardstick);
    if (!ours || !yardstick) continue;
    const bool ok = *ours / *yardstick <= ratio.bound;
    holds = holds && ok;
    std::printf("%-46s %11.2f %11.2f %7.3f %7.3f  %s\n", ratio.figure.c_str(), *ours, *yardstick, *ours / *yardstick,
                ratio.bound, ok ? "holds" : "BROKEN");
  }
  return holds;
}

int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios) {
  // What is given on the command line comes later and wins.
  std::string options[] = {argv[0], "--benchmark_repetitions=11", "--benchmark_min_time=0.05",
                           "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments;
  for (std::string& option : options) arguments.push_back(option.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  RatioReport report;
  benchmark::RunSpecifiedBenchmarks(&report);
  const bool holds =
      printRatios("figure (ns an item, medians)", ratios, [&](const std::string& name) { return report.median(name); });
  return holds ? 0 : 1;
}

}  // namespace habitra::benchmarks
