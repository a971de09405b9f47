#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace qz {

/// What must hold between two benchmarks of one run: the time of `ours` is at most `bound` times that of `yardstick`.
struct Ratio {
  std::string figure;
  std::string ours;
  std::string yardstick;
  double bound;
};

/// Shows runs as usual and keeps every repetition's time per item, for the table of ratios at the end. Machines that
/// others use make single times meaningless; the repetitions of all benchmarks are interleaved and medians compared.
class RatioReport : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;

  /// Prints the table; whether every bound held.
  [[nodiscard]] bool print(const std::vector<Ratio>& ratios) const;

 private:
  [[nodiscard]] double median(const std::string& name) const;

  std::map<std::string, std::vector<double>> nanoseconds_;  // per item, by benchmark
};

}  // namespace qz
