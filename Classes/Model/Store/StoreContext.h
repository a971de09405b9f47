#pragma once

#include <HabitraModel/Store/Author.h>
#include <HabitraModel/Store/Checkpoint.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/History/History.h>
#include <HabitraModel/Store/Outbox.h>
#include <HabitraModel/Store/Store.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace habitra {

/// Who saves, and what for.
struct SaveRequest {
  Author author = Author::app;
  /// The person's command that the save carries out; then history keeps the values before, so that it can be undone.
  std::optional<std::string> command = std::nullopt;
  /// The transaction whose command this save takes back, as noteUndo() was told; then there is a transaction even
  /// without any change.
  std::optional<std::int64_t> undoes = std::nullopt;
  std::optional<std::string> backup = std::nullopt;  ///< a copy of the store made before this save, by file name
};

/// What a save did. Without changes nothing is written and the sequence stays.
struct SaveResult {
  std::int64_t sequence = 0;
  std::int64_t inserted = 0;
  std::int64_t updated = 0;
  std::int64_t removed = 0;
};

/// A function that is called with each row of a read; borrowed for the length of the call, never null.
template <typename Row>
class RowSink {
 public:
  template <typename F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, RowSink>)
      RowSink(F&& f)  // NOLINT: meant to be made where a lambda is passed
      : target_(const_cast<void*>(static_cast<const void*>(&f))),
        call_([](void* target, const Row& row) { (*static_cast<std::remove_reference_t<F>*>(target))(row); }) {}
  void operator()(const Row& row) const { call_(target_, row); }

 private:
  void* target_;
  void (*call_)(void*, const Row&);
};

/// A unit of work on a store: objects are inserted, fetched, changed in place and removed, and one save writes rows,
/// history and author in one transaction.
///
/// **What is written must have been read under the turn.** A unit that reads, decides and writes calls beginUnit()
/// before its first read: it takes the writers' turn, which all processes share, and keeps it until save() or
/// rollback(). Insertions, removals and changes of the log begin a unit by themselves when none is open. Fields of
/// objects may be set without one; save() then begins it, and a value that somebody else changed as well since it was
/// read, or whose row somebody else removed, is a StoreError of kind `conflict`. Reads outside a unit take no lock;
/// they share one view of the store until refresh(), save() or rollback().
///
/// **Objects have identity**: a row is fetched as the same object each time. A reference stays good as long as the
/// context or until forgetObjects(), but for an inserted object until it is rolled back and for a removed one until the
/// removal is saved. When a new view begins, objects take over what others have saved. The object of a row that others
/// removed stays as it was, though nothing finds it any more, until the row is put back; what was or is changed in it
/// is a `conflict` for save(). The log has no objects: its entries are values.
///
/// **A search sees what is written.** In a unit, find, fetch and their kin first write pending changes that decide what
/// is found. Outside one they go by the values that are stored, whatever has been set since: begin a unit, or flush().
///
/// A unit that fails leaves nothing half done: when save() or any writing function throws a StoreError, all of the unit
/// has been rolled back and the turn given up.
///
/// Belongs to one queue: calls must not overlap. Contexts of one store may be used at the same time.
class StoreContext {
 public:
  explicit StoreContext(std::shared_ptr<Store> store);
  /// Rolls back what was not saved.
  ~StoreContext();
  StoreContext(const StoreContext&) = delete;
  StoreContext& operator=(const StoreContext&) = delete;

  [[nodiscard]] Store& store() const;

  // Units

  /// Takes the writers' turn and begins to write, so that nobody changes the store between a read and the save. Throws
  /// StoreError when another writer does not end its turn within ten seconds, or the store is read-only. Does nothing
  /// when a unit is open.
  void beginUnit();
  [[nodiscard]] bool isInUnit() const;

  /// Whether save() has something to write: objects inserted, removed or changed, changes of the log.
  [[nodiscard]] bool hasChanges() const;

  /// Notes that the open unit takes the command of a transaction back, for save() to say so. REQUIRES: an open unit.
  void noteUndo(std::int64_t sequence);

  /// Writes all changes with their history in one durable transaction and gives up the turn. Throws StoreError of kind
  /// `conflict` for a request with `undoes` when that was not noted in this unit: it has been rolled back since.
  SaveResult save(const SaveRequest& request);

  /// Gives up everything since the last save, and the turn. Inserted objects are gone, others are as stored.
  void rollback();

  /// Writes pending changes of objects, if there are any, into the unit, where every read sees them; begins a unit when
  /// none is open. save() does so by itself; for long imports, together with forgetObjects().
  void flush();

  /// Ends the view of the store that reads share; the next read sees what others have saved since. Inside a unit, where
  /// nobody else writes, it does nothing.
  void refresh();

  /// Drops every object that has no unsaved change; references to them end.
  void forgetObjects();

  /// The newest transaction of the store in the view of this context: when it is the same under the turn as it was when
  /// something was read without it, nothing has been saved in between.
  [[nodiscard]] std::int64_t sequence();

  /// The latest moment of any transaction, which need not be the newest one's, since clocks go back; none in a store
  /// that nobody has written to.
  [[nodiscard]] std::optional<qz::Moment> newestTransactionMoment();

  /// Names the file itself, from its making on.
  [[nodiscard]] std::string storeIdentifier();

  // Objects: every entity but the log's

  /// A new row with `values` (whose objectID is ignored); an absent `uniqueId` is filled in. Begins a unit.
  template <typename T>
  T& insert(const T& values = {}) {
    return *static_cast<T*>(insertObject(T::description(), &values));
  }

  /// Puts a removed row back as it was, under its old number `values.objectID`, so that what leads to it by number is
  /// right again. Begins a unit. Throws StoreError of kind `conflict` when the row is there. REQUIRES: the number of a
  /// row of T whose removal has been saved.
  template <typename T>
  T& reinsert(const T& values) {
    return *static_cast<T*>(reinsertObject(T::description(), &values));
  }

  /// The row with this number, or null.
  template <typename T>
  [[nodiscard]] T* find(ObjectID id) {
    return static_cast<T*>(findObject(T::description(), id));
  }

  /// The oldest row with this text in an attribute, or null; `find<TaskEntity>("uniqueId", text)`. Quick for `uniqueId`
  /// and `settingKey`, which are indexed. REQUIRES: a text attribute of T.
  template <typename T>
  [[nodiscard]] T* find(std::string_view attribute, std::string_view text) {
    const auto found = fetchObjects(T::description(), attribute, ObjectID::none, text, true);
    return found.empty() ? nullptr : static_cast<T*>(found.front());
  }

  /// All rows with this text in an attribute, in order of creation; identifiers can be double.
  template <typename T>
  [[nodiscard]] std::vector<T*> fetch(std::string_view attribute, std::string_view text) {
    return typed<T>(fetchObjects(T::description(), attribute, ObjectID::none, text, false));
  }

  /// The texts of an attribute that more than one row has, in order: identifiers that are double. Quick for indexed
  /// attributes; entries of the log may be asked about as well. REQUIRES: a text attribute of T.
  template <typename T>
  [[nodiscard]] std::vector<std::string> repeatedTexts(std::string_view attribute) {
    return repeatedTextsOf(T::description(), attribute);
  }

  /// All rows, in order of creation.
  template <typename T>
  [[nodiscard]] std::vector<T*> fetchAll() {
    return typed<T>(fetchObjects(T::description(), {}, ObjectID::none, {}, false));
  }

  /// The rows whose relationship leads to `target`, or with ObjectID::none nowhere, in order of creation;
  /// `fetchRelated<TaskTemporalDataEntity>("task", task.objectID)`. REQUIRES: a relationship of T.
  template <typename T>
  [[nodiscard]] std::vector<T*> fetchRelated(std::string_view relationship, ObjectID target) {
    return typed<T>(fetchObjects(T::description(), relationship, target, {}, false));
  }

  /// Those of them of days `from` to `to`, both included, in order of day, then of creation. Rows without a day have
  /// day 0. REQUIRES: T names the attribute that holds its day.
  template <typename T>
  [[nodiscard]] std::vector<T*> fetchRelated(std::string_view relationship, ObjectID target, std::int32_t from,
                                             std::int32_t to) {
    return typed<T>(fetchObjectsBetween(T::description(), relationship, target, from, to));
  }

  /// Removes the row, and by the delete rules of the relationships that lead to it, others or their links; a task takes
  /// its log along. Begins a unit. REQUIRES: an object of this context.
  template <typename T>
  void remove(T& object) {
    removeObject(T::description(), &object);
  }

  /// What of an object is not as stored; of an inserted one, what is not at its default. REQUIRES: of this context.
  template <typename T>
  [[nodiscard]] AttributeSet changedAttributes(const T& object) const {
    return changedAttributesOf(T::description(), &object);
  }
  /// The row as it is stored; of an inserted object, the defaults until it is written. Good until the object is next
  /// written or refreshed. REQUIRES: of this context.
  template <typename T>
  [[nodiscard]] const T& storedValues(const T& object) const {
    return *static_cast<const T*>(storedValuesOf(T::description(), &object));
  }
  template <typename T>
  [[nodiscard]] bool hasChanges(const T& object) const {
    return !changedAttributes(object).isEmpty();
  }
  /// `isChanged(data, &TaskTemporalDataEntity::lastUpdated)`
  template <typename T, typename Field>
  [[nodiscard]] bool isChanged(const T& object, Field T::*member) const {
    return isFieldChanged(T::description(), &object, &(object.*member));
  }

  // The log of a task (or of ObjectID::none, for entries whose task has not arrived)

  static constexpr std::int32_t firstDay = std::numeric_limits<std::int32_t>::min();
  static constexpr std::int32_t lastDay = std::numeric_limits<std::int32_t>::max();

  /// The entries of days `from` to `to`, both included, in order of day, then of creation. `row` must not change the
  /// log.
  void readLog(ObjectID task, std::int32_t from, std::int32_t to, RowSink<LogRow> row);
  void readLogEntries(ObjectID task, std::int32_t from, std::int32_t to, RowSink<TaskLogEntryEntity> entry);
  [[nodiscard]] std::vector<TaskLogEntryEntity> fetchLogEntries(ObjectID task, std::int32_t from = firstDay,
                                                                std::int32_t to = lastDay);

  /// All entries with this identifier, in order of creation.
  [[nodiscard]] std::vector<TaskLogEntryEntity> fetchLogEntries(std::string_view uniqueId);
  /// The oldest entry with this identifier.
  [[nodiscard]] std::optional<TaskLogEntryEntity> findLogEntry(std::string_view uniqueId);
  [[nodiscard]] std::optional<TaskLogEntryEntity> findLogEntry(const LogKey& key);
  /// The entry with this number, wherever it lies.
  [[nodiscard]] std::optional<TaskLogEntryEntity> findLogEntry(ObjectID id);

  /// The day of a task's first or last entry, entries without a day left out.
  [[nodiscard]] std::optional<std::int32_t> earliestEntryDay(ObjectID task);
  [[nodiscard]] std::optional<std::int32_t> newestEntryDay(ObjectID task);

  /// Adds an entry (its objectID is ignored; an absent `uniqueId` is filled in) and gives its number. Begins a unit.
  ObjectID insertLogEntry(const TaskLogEntryEntity& entry);

  /// Puts a removed entry back as it was, under its old number `entry.objectID`. Begins a unit. Throws StoreError of
  /// kind `conflict` when it is there. REQUIRES: the number of an entry whose removal has been saved.
  void reinsertLogEntry(const TaskLogEntryEntity& entry);

  /// Writes `entry` over the row at `key`, which may move to another day or task by it; writes nothing when it is as
  /// stored. Begins a unit. Throws StoreError of kind `conflict` when there is no such row (any more).
  void updateLogEntry(const LogKey& key, const TaskLogEntryEntity& entry);

  /// Removes the row at `key`, and with it the requests to the health store that were made for it; the same error.
  /// Begins a unit.
  void removeLogEntry(const LogKey& key);

  // Checkpoints of the walks over the log

  [[nodiscard]] std::optional<Checkpoint> checkpoint(ObjectID task);
  /// Keeps a checkpoint for the task in place of an earlier one; written by save(). Begins a unit. It holds for the log
  /// as it is now: later changes in this unit drop it, too.
  void setCheckpoint(ObjectID task, const Checkpoint& checkpoint);

  // Outbox: the tasks that others have still to be told of. It is in no history.

  /// Lets the task be told of over the link from `due` on, or earlier when that was so already. Begins a unit; it is
  /// told of only when that is saved.
  void putInOutbox(OutboxLink link, ObjectID task, qz::Moment due);
  /// What is still to be told, by when it is due.
  [[nodiscard]] std::vector<OutboxItem> outbox(OutboxLink link);
  /// It was told; what was put there meanwhile stays. Begins a unit.
  void removeFromOutbox(OutboxLink link, const OutboxItem& item);

  // How far tasks have taken health data into account. It is in no history.

  /// As it was kept; none where nothing was.
  [[nodiscard]] std::optional<std::string> healthAnchor(ObjectID task);
  /// Keeps a text for the task in place of an earlier one; written by save(), and gone with the task. Begins a unit.
  void setHealthAnchor(ObjectID task, std::string_view anchor);
  /// Keeps none any more, likewise; changes nothing where there is none.
  void removeHealthAnchor(ObjectID task);

  // History

  /// The transactions after `sequence`, oldest first, at most `limit` of them.
  void readTransactions(std::int64_t afterSequence, RowSink<StoredTransaction> transaction,
                        std::int64_t limit = std::numeric_limits<std::int64_t>::max());
  /// The transactions that were made for a person's command, newest first: the last `limit` commands, and the undos and
  /// redos since the first of them. REQUIRES: limit >= 1.
  void readCommands(RowSink<StoredTransaction> transaction, std::int64_t limit);
  /// The changes of one transaction, one per object, by entity and object. Throws StoreError of kind `damaged` for a
  /// row that is no change.
  void readChanges(std::int64_t sequence, RowSink<StoredChange> change);
  /// The changes of one entity's rows in the transactions after `after` up to `last`, by transaction and object,
  /// without reading those of others. Throws the same.
  void readChanges(EntityNumber entity, std::int64_t after, std::int64_t last, RowSink<StoredChange> change);
  /// The oldest transaction that history still has; when it has none, the number that the next one will bear.
  [[nodiscard]] std::int64_t oldestKeptSequence();

 private:
  friend class HistoryTrimming;
  friend struct MigratedDataCloudSummary;
  friend class StoredObjects;
  friend class StoreVerification;

  template <typename T>
  static std::vector<T*> typed(const std::vector<void*>& objects) {
    std::vector<T*> result;
    result.reserve(objects.size());
    for (void* object : objects) result.push_back(static_cast<T*>(object));
    return result;
  }

  void* insertObject(const EntityDescription& entity, const void* values);
  void* reinsertObject(const EntityDescription& entity, const void* values);
  void* findObject(const EntityDescription& entity, ObjectID id);
  std::vector<void*> fetchObjects(const EntityDescription& entity, std::string_view attribute, ObjectID target,
                                  std::string_view text, bool onlyFirst);
  std::vector<void*> fetchObjectsBetween(const EntityDescription& entity, std::string_view relationship,
                                         ObjectID target, std::int32_t from, std::int32_t to);
  std::vector<std::string> repeatedTextsOf(const EntityDescription& entity, std::string_view attribute);
  void removeObject(const EntityDescription& entity, void* object);
  [[nodiscard]] const void* storedValuesOf(const EntityDescription& entity, const void* object) const;
  [[nodiscard]] AttributeSet changedAttributesOf(const EntityDescription& entity, const void* object) const;
  [[nodiscard]] bool isFieldChanged(const EntityDescription& entity, const void* object, const void* field) const;

  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace habitra
