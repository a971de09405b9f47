#pragma once

#include <HabitraModel/Store/ObjectID.h>

#include <optional>
#include <string>

namespace habitra {

/// The right to process one task of one store, which nobody else in this process has as long as it lives. Claims may be
/// made and given up on any thread.
class TaskClaim {
 public:
  /// None while another one for the task is alive.
  [[nodiscard]] static std::optional<TaskClaim> make(std::string storeIdentifier, ObjectID task);

  TaskClaim(TaskClaim&& other) noexcept;
  TaskClaim& operator=(TaskClaim&&) = delete;
  ~TaskClaim();

 private:
  TaskClaim(std::string storeIdentifier, ObjectID task);

  std::string storeIdentifier_;
  ObjectID task_;  ///< none: moved from
};

}  // namespace habitra
