#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <compare>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace habitra {

/// Work that is to be done at a moment when nobody need be looking.
struct BackgroundTaskRequest {
  std::string identifier;              ///< "org.habitra.taskprocessor.refresh"
  std::optional<qz::UniqueID> taskID;  ///< the task that it is for; none: all
  qz::Moment earliestBeginDate;

  friend auto operator<=>(const BackgroundTaskRequest&, const BackgroundTaskRequest&) = default;
};

/// Remembers what is to be done later. What has become due is handed out once, to whoever asks first: a process that
/// waits for the moment, or the next one that is started. May be called from any thread.
class BackgroundTaskScheduler {
 public:
  BackgroundTaskScheduler() = default;
  BackgroundTaskScheduler(const BackgroundTaskScheduler&) = delete;
  BackgroundTaskScheduler& operator=(const BackgroundTaskScheduler&) = delete;
  virtual ~BackgroundTaskScheduler() = default;

  /// Takes the place of an earlier request with the same identifier for the same task. Throws StoreError, as do the
  /// following.
  virtual void submit(const BackgroundTaskRequest& request) = 0;
  /// Those due at `now`, by moment; they are forgotten.
  [[nodiscard]] virtual std::vector<BackgroundTaskRequest> takeDue(qz::Moment now) = 0;
  /// When the next one is due.
  [[nodiscard]] virtual std::optional<qz::Moment> nextDue() const = 0;
};

/// Keeps requests in key-value defaults, so that they outlive the process: under "tp.backgroundTasks" a dictionary of
/// moments by identifier, where the request is for one task followed by a blank and that. What is no such name or
/// moment is passed over.
class KeptBackgroundTasks : public BackgroundTaskScheduler {
 public:
  static constexpr const char* key = "tp.backgroundTasks";

  /// `defaults` must live longer.
  explicit KeptBackgroundTasks(KeyValueDefaults& defaults) : defaults_(defaults) {}

  void submit(const BackgroundTaskRequest& request) override;
  [[nodiscard]] std::vector<BackgroundTaskRequest> takeDue(qz::Moment now) override;
  [[nodiscard]] std::optional<qz::Moment> nextDue() const override;

 private:
  KeyValueDefaults& defaults_;
};

}  // namespace habitra
