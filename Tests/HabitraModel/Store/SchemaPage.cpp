#include "SchemaPage.h"

#include <HabitraModel/Store/Engine/Schema.h>
#include <HabitraModel/Store/EntityDescription.h>

#include <fmt/format.h>

#include <string_view>

namespace habitra {
namespace {

constexpr std::string_view beginning =
    R"(# The tables of the store

Written by `HabitraSchema --write` from the descriptions in `Classes/Model/Store/Entities/`; [Store.md](Store.md) says how
the tables are used. The number of an entity stands for it in checksums and history. Beside its attributes each table has
`objectID`, the number of the row, and `checksum`. *None* is `NULL`. A relationship is a foreign key that is checked at
commit; its other side has no column.
)";

std::string_view storedAs(StoredType type) {
  switch (type) {
    case StoredType::boolean: return "`INTEGER`, truth value";
    case StoredType::int16: return "`INTEGER`, 16 bits";
    case StoredType::int32: return "`INTEGER`, 32 bits";
    case StoredType::int64: return "`INTEGER`, 64 bits";
    case StoredType::real: return "`REAL`";
    case StoredType::text: return "`TEXT`";
    case StoredType::bytes: return "`BLOB`";
    case StoredType::moment: return "`INTEGER`, microseconds since 1970 in UTC";
    case StoredType::reference: break;
  }
  return "`INTEGER`, a row's number";
}

std::string attributeTable(const EntityDescription& entity) {
  std::string table = "\n| attribute | stored as | default | index |\n|---|---|---|---|\n";
  for (const AttributeDescription& attribute : entity.attributes) {
    const bool isReference = attribute.type == StoredType::reference;
    const bool hasNone = attribute.isOptional || (isReference && entity.layout == Layout::byObject);
    std::string index = attribute.isIndexed ? "yes" : "";
    if (!attribute.indexedText.empty()) index = fmt::format("of `{}`", attribute.indexedText);
    if (isReference && !entity.dayAttribute.empty()) index = fmt::format("with `{}`", entity.dayAttribute);
    table += fmt::format("| `{}` | {} | {} | {} |\n", attribute.name, storedAs(attribute.type), hasNone ? "none" : "0",
                         index);
  }
  return table;
}

std::string_view count(bool isToMany) { return isToMany ? "to-many" : "to-one"; }

/// Both sides: those that rows of the entity hold, and those that lead to them.
std::string relationshipTable(const EntityDescription& entity) {
  std::string rows;
  for (const AttributeDescription& attribute : entity.attributes) {
    if (attribute.type != StoredType::reference) continue;
    const RelationshipDescription& held = attribute.relationship;
    rows += fmt::format("| `{}` | to-one `{}` | `{}`, {} | when that goes, this {} |\n", attribute.name,
                        held.target().name, held.inverse, count(held.inverseIsToMany),
                        held.whenTargetIsRemoved == DeleteRule::cascade ? "goes with it" : "stays and leads nowhere");
  }
  for (const auto& [holder, attribute] : relationshipsTo(entity)) {
    const RelationshipDescription& held = attribute->relationship;
    rows += fmt::format("| `{}` | {} `{}` | `{}`, to-one | when this goes, {} |\n", held.inverse,
                        count(held.inverseIsToMany), holder->name, attribute->name,
                        held.whenTargetIsRemoved == DeleteRule::cascade ? "that goes with it" : "that stays");
  }
  if (rows.empty()) return {};
  return "\n| relationship | leads to | inverse | removal |\n|---|---|---|---|\n" + rows;
}

std::string section(const EntityDescription& entity) {
  std::string text =
      fmt::format("\n## {} ({})\n\nA row is {}.", entity.name, static_cast<int>(entity.number), entity.summary);
  if (entity.layout == Layout::byTaskAndDay)
    text += fmt::format(" The primary key is (`task`, `{}`, `objectID`), without a rowid; `objectID` is unique.",
                        entity.dayAttribute);
  return text + "\n" + attributeTable(entity) + relationshipTable(entity);
}

}  // namespace

std::string schemaPage() {
  std::string page(beginning);
  for (const EntityDescription* entity : allEntities()) page += section(*entity);
  page += "\n## The store's own\n\n```sql" + std::string(ownTableDefinitions()) + "```\n";
  return page;
}

}  // namespace habitra
