#pragma once

#include <string>
#include <string_view>

namespace habitra {

struct EntityDescription;

/// The statements that make the table of an entity and its indexes.
[[nodiscard]] std::string tableDefinition(const EntityDescription& entity);

/// The statements that make the store's own tables.
[[nodiscard]] std::string_view ownTableDefinitions();

/// The statements that make a new store of the present version, with the store's own identifier.
[[nodiscard]] std::string schemaDefinition(const std::string& storeIdentifier);

}  // namespace habitra
