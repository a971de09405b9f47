#include <HabitraApp/WidgetSnapshot.h>
#include <HabitraBackup/ReplacementFile.h>

#include <nlohmann/json.hpp>

namespace habitra {

void WidgetSnapshot::write(qz::YYYYMMDD day, const std::vector<HabitSummary>& habits) {
  isOutdated_ = false;
  const nlohmann::json snapshot{{"version", 1}, {"day", day}, {"habits", habits}};
  ReplacementFile file(file_);
  file.write(snapshot.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
  file.replace();
}

}  // namespace habitra
