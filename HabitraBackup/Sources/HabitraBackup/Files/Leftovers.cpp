#include <HabitraBackup/Files/Leftovers.h>

#include <chrono>
#include <exception>
#include <system_error>

namespace habitra {

void removeLeftovers(const std::filesystem::path& folder,
                     const std::function<bool(const std::filesystem::directory_entry&)>& isLeftover) noexcept try {
  const auto dayAgo = std::filesystem::file_time_type::clock::now() - std::chrono::days(1);
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (!isLeftover(*entry)) continue;
    std::error_code ignored;
    const auto touched = std::filesystem::last_write_time(entry->path(), ignored);
    if (!ignored && touched < dayAgo) std::filesystem::remove_all(entry->path(), ignored);
  }
} catch (const std::exception&) {
  // They are in nobody's way.
}

}  // namespace habitra
