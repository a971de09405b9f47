#pragma once

#include <HabitraModel/Store/CheckpointTable.h>
#include <HabitraModel/Store/EntityTable.h>
#include <HabitraModel/Store/HistoryTable.h>
#include <HabitraModel/Store/ObjectRegistry.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreUnit.h>

#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace habitra {

/// What a context is made of, and the steps that its operations share.
struct StoreContext::Parts {
  explicit Parts(std::shared_ptr<Store> store);

  /// The table of an entity, made at its first use.
  EntityTable& table(const EntityDescription& entity);

  /// Begins a view if there is neither view nor unit; objects take over what others have stored.
  void beginView();
  void beginUnit();
  /// Writes pending changes of objects. REQUIRES: a unit, unless nothing is pending.
  void flush();
  /// The same, in a unit that is begun for it when something is pending.
  void flushIfNeeded();
  /// Writes inserted objects, so that rows may lead to them.
  void flushInsertions();
  /// Before objects are searched for: begins a view, or in a unit writes what is pending, since the engine searches
  /// what is written.
  void beginSearch();
  /// The objects of the rows that a query finds.
  std::vector<void*> objects(const EntityTable& table, Statement& rows, bool onlyFirst);
  /// Rolls everything back.
  void rollback();

  /// Runs a step that writes; when it fails, the unit is rolled back.
  template <typename Step>
  auto writing(Step&& step) {
    try {
      beginUnit();
      return std::forward<Step>(step)();
    } catch (...) {
      rollback();
      throw;
    }
  }

  [[nodiscard]] bool hasPendingObjects();
  [[nodiscard]] bool hasWritten() const {
    return hasCheckpoints || counts.inserted + counts.updated + counts.removed > 0;
  }

  void writeInsertion(ObjectRegistry::Entry& entry);
  void writeUpdate(ObjectRegistry::Entry& entry, AttributeSet changes);
  void writeRemoval(ObjectRegistry::Entry& entry);
  /// Removes the row, and by the delete rules others or their links. REQUIRES: a unit in which nothing is pending.
  void remove(ObjectRegistry::Entry& entry);
  void applyDeleteRule(const HeldRelationship& held, ObjectID target);

  /// The entry at `key` into `logBuffer`; gives its checksum. Throws a conflict when it is not there.
  std::int64_t findStoredLogEntry(const LogKey& key);
  /// Removes the entry and applies the delete rules. REQUIRES: of what leads to the log, nothing is pending.
  void removeLogEntry(const LogKey& key);
  /// Writes what is pending, if some of it may lead to an entry of the log.
  void flushWhatLeadsToTheLog();
  /// The entry that a query of the log finds first.
  std::optional<TaskLogEntryEntity> firstLogEntry(Statement& rows);
  /// Inserts `newEntry`.
  void writeNewLogEntry();
  /// The table of a row that is to be put back. Traps when its number was never given; throws a conflict when there is
  /// a row. REQUIRES: a unit.
  const EntityTable& requireFree(const EntityDescription& entity, const LogKey& key);

  StoreUnit unit;
  HistoryTable history;
  CheckpointTable checkpoints;
  ObjectRegistry registry;
  Query light;     ///< a task's log, only what the rules need
  Query earliest;  ///< first day of a task's log
  Query newest;    ///< last day
  std::map<EntityNumber, EntityTable> tables;

  /// A relationship that leads to the log, and whether any row leads to an entry by it: nearly always none does, and
  /// then the removal of an entry costs no more than this question.
  struct LogHolder {
    HeldRelationship held;
    Query any;
  };
  std::deque<LogHolder>& holdersOfLogEntries();
  std::deque<LogHolder> logHolders;  ///< made at the first removal
  TaskLogEntryEntity logBuffer;      ///< an entry as it is stored
  TaskLogEntryEntity newEntry;       ///< an entry on its way in
  SaveResult counts;                 ///< what the unit has written
  bool hasCheckpoints = false;       ///< the unit has written checkpoints
  bool keepsBefore = false;          ///< the unit's history holds values before
  int readingLog = 0;                ///< reads of the log that are under way
};

}  // namespace habitra
