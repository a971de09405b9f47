#pragma once

#include <HabitraModel/Store/EntityTable.h>

#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace habitra {

/// The objects of a context, one per row: as they are, as they are stored, and as they were when the unit began.
class ObjectRegistry {
 public:
  struct Entry {
    explicit Entry(const EntityDescription& description)
        : entity(&description), live(description), stored(description) {}

    const EntityDescription* entity;
    OwnedObject live;    ///< what callers read and change
    OwnedObject stored;  ///< the row in the view or unit; the defaults while it is not written
    std::int64_t checksum = 0;
    std::optional<OwnedObject> begun;  ///< the row when the unit began; only once the unit has written over it
    std::int64_t begunChecksum = 0;
    bool isWritten = true;  ///< the row is in the view or unit
    bool isNew = false;     ///< the unit inserted it
    bool isGone = false;    ///< removed, by the unit or by somebody else
    bool hasConflict = false;

    [[nodiscard]] AttributeSet changes() const;
    void rememberBegun();
  };

  using TableOf = std::function<EntityTable&(const EntityDescription&)>;

  [[nodiscard]] Entry* find(ObjectID id);
  /// The entry of an object. Traps when the object is not of this context.
  [[nodiscard]] Entry& entry(const EntityDescription& entity, const void* object);
  [[nodiscard]] const Entry& entry(const EntityDescription& entity, const void* object) const;

  /// The entry of the row that `statement` stands on, made if it is new here.
  Entry& adopt(const EntityTable& table, Statement& statement);
  Entry& insert(const EntityDescription& entity, ObjectID id, const void* values);
  /// Drops what is left of a row that somebody else has removed. Traps when the unit itself inserted or removed it.
  void forgetRemoved(ObjectID id);

  [[nodiscard]] std::map<ObjectID, Entry>& entries() { return entries_; }
  [[nodiscard]] bool hasUnwritten() const { return unwritten_ > 0; }
  void noteWritten() { --unwritten_; }

  /// Takes over what others have stored, put back or removed. A value that was changed here as well is kept and marks a
  /// conflict.
  void refresh(const TableOf& tableOf);
  /// Makes everything as it was when the unit began.
  void rollback();
  /// What the unit wrote is now how things are.
  void commit();
  void forgetUnchanged();

 private:
  void refresh(Entry& entry, EntityTable& table);

  std::map<ObjectID, Entry> entries_;
  int unwritten_ = 0;
};

}  // namespace habitra
