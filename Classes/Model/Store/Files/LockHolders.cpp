#include <HabitraModel/Store/Files/LockHolders.h>

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <fstream>
#include <set>
#include <sstream>

namespace habitra {

namespace {

/// The processes that hold a lock on the file, by the system's list: a line has number, "FLOCK", "ADVISORY", "READ" or
/// "WRITE", process, and device and inode as "fd:01:1234".
std::set<pid_t> holdersOf(const struct stat& file) {
  const std::string inode = fmt::format(":{}", file.st_ino);
  const std::string place = fmt::format("{:02x}:{:02x}{}", ::major(file.st_dev), ::minor(file.st_dev), inode);
  std::set<pid_t> onDevice;
  std::set<pid_t> anywhere;  // some file systems show another device here than to their users
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, advisory, access, where;
    pid_t process = 0;
    // Who waits has "->" where others have the kind.
    if (!(words >> number >> kind >> advisory >> access >> process >> where) || kind != "FLOCK" || process <= 0)
      continue;
    if (where == place) onDevice.insert(process);
    if (where.ends_with(inode)) anywhere.insert(process);
  }
  return onDevice.empty() ? anywhere : onDevice;
}

std::string nameOf(pid_t process) {
  if (process == ::getpid()) return "this program itself";
  std::string name;
  std::ifstream file(fmt::format("/proc/{}/comm", process));
  if (!std::getline(file, name) || name.empty()) return {};
  // A name is what its program makes it: it must not break the line.
  for (char& c : name)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return fmt::format("{} (process {})", name, process);
}

}  // namespace

std::string lockHolders(int descriptor) {
  constexpr int most = 10;
  struct stat status {};
  std::string names;
  int count = 0;
  if (::fstat(descriptor, &status) == 0) {
    for (const pid_t process : holdersOf(status)) {
      const std::string name = nameOf(process);
      if (name.empty() || ++count > most) continue;
      names += (names.empty() ? "" : ", ") + name;
    }
  }
  if (count > most) names += fmt::format(" and {} more", count - most);
  return names.empty() ? "another program" : names;
}

}  // namespace habitra
