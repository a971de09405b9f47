#include <HabitraModel/Store/Files/ChangeListeners.h>

#include <utility>

namespace habitra {

std::shared_ptr<void> ChangeListeners::listen(std::function<void()> listener) {
  const std::scoped_lock lock(mutex_);
  const int number = ++count_;
  listeners_.emplace(number, std::move(listener));
  return {nullptr, [self = shared_from_this(), number](void*) {
            const std::scoped_lock ending(self->mutex_);
            self->listeners_.erase(number);
          }};
}

void ChangeListeners::tell() const {
  const std::scoped_lock lock(mutex_);
  for (const auto& [number, listener] : listeners_) listener();
}

}  // namespace habitra
