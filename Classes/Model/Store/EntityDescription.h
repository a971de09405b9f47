#pragma once

#include <HabitraModel/Store/ObjectID.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// The description of an entity: the one place that says what a kind of row is made of. Tables, indexes, reads, writes,
/// change tracking, checksums and history all follow from it.
namespace habitra {

/// The number of an entity in checksums and history. Fixed forever; new ones are appended.
enum class EntityNumber : std::uint8_t {
  task = 1,
  taskTemporalData = 2,
  taskLogEntry = 3,
  userProfile = 4,
  setting = 5,
  taskCounter = 6,
  taskNote = 7,
  taskTimer = 8,
  taskNotificationSettings = 9,
  taskNotificationReminders = 10,
  taskCategory = 11,
  taskShare = 12,
  taskShareOwner = 13,
  healthKitRequest = 14,
  taskCategoryLink = 15,
};

/// What a column holds, and how wide. The C++ type of the member follows: bool, std::int16_t, std::int32_t,
/// std::int64_t, double (each also in std::optional), std::optional<std::string>, std::optional<Bytes>,
/// std::optional<qz::Moment>, ObjectID.
enum class StoredType : std::uint8_t { boolean, int16, int32, int64, real, text, bytes, moment, reference };

/// What becomes of the row that holds a relationship when the row it leads to is removed.
enum class DeleteRule : std::uint8_t {
  cascade,  ///< it is removed as well
  nullify,  ///< it stays, and leads nowhere
};

struct EntityDescription;

/// A to-one relationship, seen from the row that holds it.
struct RelationshipDescription {
  const EntityDescription& (*target)() = nullptr;
  std::string_view inverse;  ///< its name on the other side
  bool inverseIsToMany = false;
  DeleteRule whenTargetIsRemoved = DeleteRule::nullify;
};

/// One stored attribute or to-one relationship. A required attribute's default is zero, an optional one's is none.
struct AttributeDescription {
  std::string_view name;  ///< of the attribute and of its column
  StoredType type = StoredType::int64;
  bool isOptional = false;
  bool isIndexed = false;                                           ///< rows are looked up by it
  void* (*field)(void* object) = nullptr;                           ///< the member that holds it
  bool (*isSame)(const void* object, const void* other) = nullptr;  ///< compares that member of two objects
  RelationshipDescription relationship;                             ///< for type `reference` only
  std::string_view indexedText;  ///< where not empty, the index holds only the rows with this text
};

/// How the rows of an entity lie in the file.
enum class Layout : std::uint8_t {
  byObject,     ///< by objectID; rows are objects with identity in a context
  byTaskAndDay  ///< clustered by (task or 0, day, objectID); rows are plain values
};

struct EntityDescription {
  static constexpr std::size_t maximalAttributeCount = 64;  ///< positions are bits of a 64-bit mask

  EntityNumber number;
  std::string_view name;     ///< of the entity and of its table
  std::string_view summary;  ///< what one row is
  /// The order is fixed forever, since masks and checksums speak of positions; new attributes are appended.
  std::span<const AttributeDescription> attributes;
  /// The attribute that holds the day of a row, or empty: rows that a relationship leads from are then fetched between
  /// two days, and its index is over both.
  std::string_view dayAttribute;
  Layout layout = Layout::byObject;

  void* (*create)() = nullptr;
  void (*destroy)(void* object) = nullptr;
  void (*assign)(void* object, const void* from) = nullptr;
  bool (*isSame)(const void* object, const void* other) = nullptr;  ///< compares all members at once
  ObjectID& (*objectID)(void* object) = nullptr;

  /// The position of the attribute called `name`, if there is one.
  [[nodiscard]] std::optional<std::size_t> position(std::string_view attributeName) const;
};

/// Every entity of the store, in order of their numbers.
[[nodiscard]] std::span<const EntityDescription* const> allEntities();

/// The entity of that number, or null for one of a newer version.
[[nodiscard]] const EntityDescription* entityWithNumber(EntityNumber number);

/// A relationship together with the entity whose rows hold it.
struct HeldRelationship {
  const EntityDescription* holder;
  const AttributeDescription* attribute;
};

/// The relationships that lead to rows of an entity, in order of their holders' numbers.
[[nodiscard]] std::vector<HeldRelationship> relationshipsTo(const EntityDescription& target);

/// A set of attributes of one entity, by position.
class AttributeSet {
 public:
  constexpr AttributeSet() = default;
  explicit constexpr AttributeSet(std::uint64_t bits) : bits_(bits) {}

  [[nodiscard]] constexpr bool contains(std::size_t position) const { return (bits_ >> position & 1) != 0; }
  constexpr void insert(std::size_t position) { bits_ |= std::uint64_t{1} << position; }
  [[nodiscard]] constexpr bool isEmpty() const { return bits_ == 0; }
  [[nodiscard]] constexpr std::uint64_t bits() const { return bits_; }

  friend constexpr AttributeSet operator|(AttributeSet a, AttributeSet b) { return AttributeSet(a.bits_ | b.bits_); }
  friend constexpr bool operator==(AttributeSet, AttributeSet) = default;

 private:
  std::uint64_t bits_ = 0;
};

}  // namespace habitra
