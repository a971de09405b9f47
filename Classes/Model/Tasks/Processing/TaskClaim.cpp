#include <HabitraModel/Tasks/Processing/TaskClaim.h>

#include <mutex>
#include <set>
#include <utility>

namespace habitra {
namespace {

struct Claims {
  std::mutex mutex;
  std::set<std::pair<std::string, ObjectID>> tasks;
};

Claims& claims() {
  static Claims all;
  return all;
}

}  // namespace

std::optional<TaskClaim> TaskClaim::make(std::string storeIdentifier, ObjectID task) {
  Claims& all = claims();
  const std::scoped_lock lock(all.mutex);
  if (!all.tasks.emplace(storeIdentifier, task).second) return std::nullopt;
  return TaskClaim(std::move(storeIdentifier), task);
}

TaskClaim::TaskClaim(std::string storeIdentifier, ObjectID task)
    : storeIdentifier_(std::move(storeIdentifier)), task_(task) {}

TaskClaim::TaskClaim(TaskClaim&& other) noexcept
    : storeIdentifier_(std::move(other.storeIdentifier_)), task_(std::exchange(other.task_, ObjectID::none)) {}

TaskClaim::~TaskClaim() {
  if (task_ == ObjectID::none) return;
  Claims& all = claims();
  const std::scoped_lock lock(all.mutex);
  all.tasks.erase({storeIdentifier_, task_});
}

}  // namespace habitra
