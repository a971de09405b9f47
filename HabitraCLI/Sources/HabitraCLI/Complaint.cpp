#include <HabitraCLI/Complaint.h>
#include <HabitraCLI/DisplayText.h>

#include <unistd.h>
#include <string>

namespace habitra {

void complain(std::string_view message) {
  const std::string line = "habitra: " + displayable(message) + "\n";
  static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace habitra
