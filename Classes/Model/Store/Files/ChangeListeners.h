#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace habitra {

/// Who is told of the transactions of a store in memory, which has no file to watch. Safe from any thread.
class ChangeListeners : public std::enable_shared_from_this<ChangeListeners> {
 public:
  /// Calls `listener` with each tell(), until the token is let go of. It must not call back.
  [[nodiscard]] std::shared_ptr<void> listen(std::function<void()> listener);
  void tell() const;

 private:
  mutable std::mutex mutex_;
  int count_ = 0;
  std::map<int, std::function<void()>> listeners_;  // by number
};

}  // namespace habitra
