#include "QZDateTime/RatioReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace qz {

void RatioReport::ReportRuns(const std::vector<Run>& runs) {
  benchmark::ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    const auto items = run.counters.find("items_per_second");
    if (run.run_type != Run::RT_Iteration || items == run.counters.end()) continue;
    nanoseconds_[run.run_name.function_name].push_back(1e9 / items->second.value);
  }
}

double RatioReport::median(const std::string& name) const {
  const auto found = nanoseconds_.find(name);
  if (found == nanoseconds_.end()) return std::numeric_limits<double>::quiet_NaN();
  std::vector<double> times = found->second;
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

bool RatioReport::print(const std::vector<Ratio>& ratios) const {
  bool holds = true;
  std::printf("\n%-46s %9s %10s %7s %7s\n", "figure (ns an item, medians)", "ours", "yardstick", "ratio", "bound");
  for (const Ratio& ratio : ratios) {
    const double ours = median(ratio.ours);
    const double yardstick = median(ratio.yardstick);
    if (std::isnan(ours) || std::isnan(yardstick)) continue;  // filtered out of this run
    const bool ok = ours / yardstick <= ratio.bound;
    holds = holds && ok;
    std::printf("%-46s %9.2f %10.2f %7.3f %7.3f  %s\n", ratio.figure.c_str(), ours, yardstick, ours / yardstick,
                ratio.bound, ok ? "holds" : "BROKEN");
  }
  return holds;
}

}  // namespace qz
