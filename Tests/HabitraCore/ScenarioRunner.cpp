#include "Scenario.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string contents(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Shows the scenario as the walk draws it, or writes that into its file; whether the file drew it so already.
bool comesOut(const std::string& path, bool isToBeWritten) {
  const std::string text = contents(path);
  const std::string drawn = habitra::drawn(text);
  if (!isToBeWritten) {
    std::cout << drawn;
  } else if (drawn != text && !(std::ofstream(path) << drawn).flush()) {
    throw std::runtime_error("cannot be written");
  }
  return habitra::evened(drawn) == habitra::evened(text);
}

}  // namespace

/// HabitraScenario [--write] FILE...: prints scenarios (see Scenario.h) as the rules compute them. With --write their
/// computed part is replaced in the files instead. Exits with 1 when a file is not what was computed, 2 when one cannot
/// be read.
int main(int argc, char** argv) {
  std::vector<std::string> paths(argv + 1, argv + argc);
  const bool isToBeWritten = std::erase(paths, "--write") != 0;
  if (paths.empty()) {
    std::cerr << "usage: HabitraScenario [--write] FILE...\n";
    return 2;
  }
  int result = 0;
  for (const std::string& path : paths) {
    try {
      if (comesOut(path, isToBeWritten)) continue;
      std::cerr << path << (isToBeWritten ? ": written anew\n" : ": differs from what the rules give\n");
      result = std::max(result, 1);
    } catch (const std::exception& error) {
      std::cerr << path << ": " << error.what() << '\n';
      result = 2;
    }
  }
  return result;
}
