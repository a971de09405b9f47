#pragma once

#include <HabitraApp/HabitSummary.h>
#include <HabitraModel/Links/WidgetCenter.h>
#include <HabitraModel/Store/History/HistoryToken.h>
#include <QZDateTime/YYYYMMDD.h>

#include <atomic>
#include <filesystem>
#include <vector>

namespace habitra {

/// The widget centre of a desktop: a small file that panels read and watch, "Habitra-Widgets.json" in the home, the
/// owner's alone like all of it. It is written once for all that asked for it, after the answer, and replaced in one
/// step, by writers that take turns on "Habitra-Widgets.json.lock".
class WidgetSnapshot : public WidgetCenter {
 public:
  static constexpr const char* fileName = "Habitra-Widgets.json";

  explicit WidgetSnapshot(const std::filesystem::path& home) : file_(home / fileName) {}

  void reloadAllTimelines() noexcept override { isOutdated_ = true; }
  /// Whether somebody has asked for it since it was last written, or the file says how things stood on another day or
  /// before a transaction of this store: whoever made that had no time to write it. A file that is not there is missed
  /// by nobody.
  [[nodiscard]] bool isOutdated(const HistoryToken& stored, qz::YYYYMMDD day) const;

  /// How the habits of a store stood on their `day` when its newest transaction was that of `stored`.
  struct Content {
    HistoryToken stored;
    qz::YYYYMMDD day;
    std::vector<HabitSummary> habits;
  };

  /// Writes an object with "version" (1), "store" (the identifier), "sequence", "day" and "habits", each as
  /// HabitSummary.h says, unless the file says already what was so later. Throws qz::Error where the file cannot be
  /// written; it is as it was then, and remains outdated.
  void write(const Content& content);

 private:
  const std::filesystem::path file_;
  std::atomic<bool> isOutdated_ = false;
};

}  // namespace habitra
