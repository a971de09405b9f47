#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Tasks/RepeatedWarnings.h>
#include <QZLog/Log.h>

#include <mutex>
#include <set>
#include <utility>

namespace habitra {
namespace {

struct Given {
  std::mutex mutex;
  std::set<std::pair<std::string, std::string>> warnings;  // by the task's identifier
};

Given& given() {
  static Given all;
  return all;
}

}  // namespace

void warnOnce(const TaskEntity& task, const std::string& warning) {
  if (!qz::log::isKept(qz::log::Level::warning)) return;
  Given& all = given();
  {
    const std::scoped_lock lock(all.mutex);
    if (!all.warnings.emplace(task.uniqueId.value_or(""), warning).second) return;
  }
  qz::log::write(qz::log::Level::warning, warning);
}

}  // namespace habitra
