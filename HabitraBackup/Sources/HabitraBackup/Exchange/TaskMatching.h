#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraModel/Store/ObjectID.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace habitra {

class StoreContext;
struct TaskEntity;

/// The stored tasks that tasks of a document can be; see TaskDataImporter. Belongs to the context's queue.
class TaskMatching {
 public:
  TaskMatching(StoreContext& context, const HabitraJSONBackup& document);

  /// The stored task that a task of the document is. One found by its title is no other's from then on.
  [[nodiscard]] std::optional<ObjectID> find(const HabitraJSONBackupTask& task);

  /// Whether a deleted task still bears the identifier.
  [[nodiscard]] bool isOfDeletedTask(const qz::UniqueID& id) const { return deletedIds_.contains(id); }

  /// Notes that the stored task has become one of the document. A new one is found by its identifier when the document
  /// has it twice, but never by its title: tasks of one document that share a title are different tasks.
  void noteBroughtIn(const TaskEntity& task);
  /// Whether a task of the document has become this one.
  [[nodiscard]] bool isBroughtIn(ObjectID task) const { return broughtIn_.contains(task); }

 private:
  std::unordered_map<qz::UniqueID, ObjectID> byId_;
  std::unordered_map<std::string, std::vector<ObjectID>> byTitle_;
  std::unordered_set<ObjectID> claimed_;
  std::unordered_set<ObjectID> broughtIn_;
  std::unordered_set<qz::UniqueID> deletedIds_;
};

}  // namespace habitra
