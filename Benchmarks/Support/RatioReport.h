#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace habitra::benchmarks {

/// What must hold between two benchmarks of one run: the time of an item in `ours` is at most `bound` times that in
/// `yardstick`. Both are the names of functions, without what Google Benchmark appends ("/real_time", "/8"); both call
/// SetItemsProcessed().
struct Ratio {
  std::string figure;
  std::string ours;
  std::string yardstick;
  double bound;
};

/// Prints the table of ratios under a heading such as "figure (ns an item, medians)"; whether every bound held. A ratio
/// of which `valueOf` does not know a side is left out.
[[nodiscard]] bool printRatios(const std::string& heading, const std::vector<Ratio>& ratios,
                               const std::function<std::optional<double>(const std::string& name)>& valueOf);

/// The main function of a benchmark program: runs what the command line of Google Benchmark asks for, by default all,
/// then prints the table of ratios whose two sides were run. 0 when every bound held, 1 when one is broken, 2 when the
/// command line is not understood.
///
/// Machines that others use make single times meaningless, so each benchmark is repeated, the repetitions of all are
/// interleaved, and medians are compared.
[[nodiscard]] int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios);

}  // namespace habitra::benchmarks
