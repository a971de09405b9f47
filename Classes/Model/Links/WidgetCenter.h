#pragma once

namespace habitra {

/// Shows how tasks stand outside of the application, on a desktop panel or a lock screen.
class WidgetCenter {
 public:
  WidgetCenter() = default;
  WidgetCenter(const WidgetCenter&) = delete;
  WidgetCenter& operator=(const WidgetCenter&) = delete;
  virtual ~WidgetCenter() = default;

  /// Lets everything be shown anew, soon; many calls may come to one. May be called from any thread.
  virtual void reloadAllTimelines() noexcept = 0;
};

}  // namespace habitra
