#pragma once

#include <HabitraModel/Store/Engine/CheckpointTable.h>
#include <HabitraModel/Store/Engine/EntityTable.h>
#include <HabitraModel/Store/Engine/HealthAnchorTable.h>
#include <HabitraModel/Store/Engine/OutboxTable.h>
#include <HabitraModel/Store/Files/UndoBackups.h>
#include <HabitraModel/Store/History/HistoryTable.h>
#include <HabitraModel/Store/ObjectRegistry.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreUnit.h>

#include <deque>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
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
  /// Before objects are searched for by these attributes: begins a view, or in a unit writes what decides the search.
  void beginSearch(const EntityDescription& entity, std::initializer_list<std::string_view> attributes);
  /// Writes what decides which rows have what in these attributes, since the engine searches what is written: inserted
  /// objects, and those that are changed there. Whatever else has changed waits, so that a search among thousands of
  /// objects does not compare them all. REQUIRES: a unit.
  void flushForSearch(const EntityDescription& entity, std::initializer_list<std::string_view> attributes);
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

  [[nodiscard]] bool hasWritten() const { return hasOwnRows || hasRows; }

  /// Counts what the history says of one more object, or no longer says.
  void count(const HistoryTable::Recorded& recorded);
  /// Writes an object that is changed. Throws a conflict when somebody else has changed the same or removed the row.
  void writeIfChanged(ObjectRegistry::Entry& entry);
  /// Ends the unit's history with what the request says; a big command's has a backup instead of values before.
  StoredTransaction writeTransaction(const SaveRequest& request, const SaveResult& written, UndoBackup& backup);
  void writeInsertion(ObjectRegistry::Entry& entry);
  void writeUpdate(ObjectRegistry::Entry& entry, AttributeSet changes);
  void writeRemoval(ObjectRegistry::Entry& entry);
  /// Removes the row, and by the delete rules others or their links. REQUIRES: a unit.
  void remove(ObjectRegistry::Entry& entry);
  void applyDeleteRule(const HeldRelationship& held, ObjectID target);

  /// The entry at `key` into `logBuffer`; gives its checksum. Throws a conflict when it is not there.
  std::int64_t findStoredLogEntry(const LogKey& key);
  /// Removes the entry and applies the delete rules. REQUIRES: flushWhatLeadsToTheLog().
  void removeLogEntry(const LogKey& key);
  /// Writes what decides which rows lead to an entry of the log.
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
  OutboxTable outbox;
  HealthAnchorTable healthAnchors;
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
  SaveResult counts;                 ///< what the unit's history says
  bool hasRows = false;              ///< the unit has written rows, and be it back and forth
  bool hasOwnRows = false;           ///< the unit has written to tables of the store's own
  bool keepsBefore = false;          ///< the unit's history holds values before
  /// The transaction whose command the unit takes back.
  std::optional<std::int64_t> undone;
  int readingLog = 0;  ///< reads of the log that are under way
};

}  // namespace habitra
