#pragma once

#include <HabitraModel/Store/Engine/EntityTable.h>

#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

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
    bool isWritten = true;     ///< the row is in the view or unit
    bool isNew = false;        ///< the unit inserted it
    bool isGone = false;       ///< removed, by the unit or by somebody else
    bool hasConflict = false;  ///< somebody else has stored another value for an attribute that was changed here

    [[nodiscard]] bool isRemovedHere() const { return isGone && (isNew || begun); }
    /// What is not as stored; of a row that the unit removed, nothing.
    [[nodiscard]] AttributeSet changes() const;
    /// Whether there is any of it: much quicker to know.
    [[nodiscard]] bool isChanged() const { return !isRemovedHere() && !entity->isSame(live.get(), stored.get()); }
    [[nodiscard]] bool isChanged(AttributeSet which) const;
    void rememberBegun();
  };

  using Entries = std::map<ObjectID, Entry>;
  using TableOf = std::function<EntityTable&(const EntityDescription&)>;

  [[nodiscard]] Entry* find(const EntityDescription& entity, ObjectID id);
  /// The entry of an object. Traps when the object is not of this context.
  [[nodiscard]] Entry& entry(const EntityDescription& entity, const void* object);
  [[nodiscard]] const Entry& entry(const EntityDescription& entity, const void* object) const;

  /// The entry of the row that `statement` stands on, made if it is new here.
  Entry& adopt(const EntityTable& table, Statement& statement);
  Entry& adopt(const EntityDescription& entity, ObjectID id, Entry&& loaded);
  Entry& insert(const EntityDescription& entity, ObjectID id, const void* values);
  /// Drops what is left of a row that somebody else has removed. Traps when the unit itself inserted or removed it.
  void forgetRemoved(const EntityDescription& entity, ObjectID id);

  /// The objects of one entity, in order of creation.
  [[nodiscard]] Entries& entries(const EntityDescription& entity) { return objects_[entity.number].entries; }
  template <typename Visitor>
  void visit(Visitor&& visitor) {
    for (auto& [number, objects] : objects_)
      for (auto& [id, entry] : objects.entries) visitor(entry);
  }

  /// The inserted objects of an entity that are to be written; the caller writes them.
  [[nodiscard]] std::vector<Entry*> takeUnwritten(const EntityDescription& entity);
  [[nodiscard]] std::vector<Entry*> takeUnwritten();
  /// Whether anything is to be written.
  [[nodiscard]] bool hasPending() const;

  /// Takes over what others have stored, put back or removed. A value that was changed here as well is kept and marks a
  /// conflict.
  void refresh(const TableOf& tableOf);
  /// Makes everything as it was when the unit began.
  void rollback();
  /// What the unit wrote is now how things are. Objects of rows that it removed end; those of rows that others removed
  /// stay, since nobody here has asked for their end.
  void commit();
  void forgetUnchanged();

 private:
  void refresh(Entry& entry, EntityTable& table);

  struct Objects {
    Entries entries;
    std::vector<Entry*> unwritten;
  };

  std::map<EntityNumber, Objects> objects_;
};

}  // namespace habitra
