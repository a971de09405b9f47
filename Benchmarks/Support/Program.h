#pragma once

#include <string>
#include <vector>

namespace habitra::benchmarks {

/// What a whole process cost.
struct ProgramRun {
  double seconds;  ///< from its start to its end
  double peak;     ///< MiB of memory at most
};

/// Runs a program with its output thrown away and waits for its end. Throws std::runtime_error when it fails.
ProgramRun runProgram(std::vector<std::string> words);

}  // namespace habitra::benchmarks
