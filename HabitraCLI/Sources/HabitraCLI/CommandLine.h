#pragma once

#include <string>
#include <vector>

namespace habitra {

/// One invocation of the program: reads its words (the first is the program's own name), does what they say, writes the
/// answer to standard output and errors, one line each, to standard error. Returns the exit code: 0 done, 1 the action
/// failed, 2 the words were not understood. A reader who closes standard output early is no failure.
/// Belongs to the main thread; changes how the process takes SIGPIPE and SIGXFSZ.
[[nodiscard]] int runCommandLine(const std::vector<std::string>& words);

}  // namespace habitra
