#pragma once

#include <HabitraModel/Store/ObjectID.h>
#include <HabitraModel/Tasks/TaskPageNumber.h>

#include <cstdint>
#include <map>

namespace habitra {

class StoreContext;
struct TaskEntity;

/// The page that a stored task stands on; page 1 when it has no profile, or one that is no page.
[[nodiscard]] TaskPageNumber pageOf(const TaskEntity& task, StoreContext& context);

/// The pages of a store while tasks are put on them. Belongs to the context's queue.
class StoredPages {
 public:
  /// Reads the profiles and the places of all tasks. REQUIRES: a unit is open, and `context` outlives this object.
  explicit StoredPages(StoreContext& context);

  /// The profile of the page; none where it has none.
  [[nodiscard]] ObjectID find(TaskPageNumber page) const;
  /// The profile of the page, made when there is none ("Page 2").
  [[nodiscard]] ObjectID profile(TaskPageNumber page);
  /// The place after the last task of the page, which counts as taken from now on.
  [[nodiscard]] std::int16_t nextDisplayOrder(TaskPageNumber page);

 private:
  StoreContext& context_;
  std::map<TaskPageNumber, ObjectID> profiles_;
  std::map<TaskPageNumber, std::int16_t> lastDisplayOrder_;
};

}  // namespace habitra
