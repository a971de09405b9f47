#pragma once

#include <HabitraApp/HabitSummary.h>
#include <HabitraModel/Links/WidgetCenter.h>
#include <QZDateTime/YYYYMMDD.h>

#include <atomic>
#include <filesystem>
#include <vector>

namespace habitra {

/// The widget centre of a desktop: a small file that panels read and watch, "Habitra-Widgets.json" in the home. It is
/// written once for all that asked for it, after the answer, and replaced in one step.
class WidgetSnapshot : public WidgetCenter {
 public:
  static constexpr const char* fileName = "Habitra-Widgets.json";

  explicit WidgetSnapshot(const std::filesystem::path& home) : file_(home / fileName) {}

  void reloadAllTimelines() noexcept override { isOutdated_ = true; }
  /// Whether somebody has asked for it since it was last written.
  [[nodiscard]] bool isOutdated() const { return isOutdated_; }

  /// Writes how the habits stand on their `day`: an object with "version" (1), "day" and "habits", each as
  /// HabitSummary.h says. Throws qz::Error where the file cannot be written; it is as it was then.
  void write(qz::YYYYMMDD day, const std::vector<HabitSummary>& habits);

 private:
  const std::filesystem::path file_;
  std::atomic<bool> isOutdated_ = false;
};

}  // namespace habitra
