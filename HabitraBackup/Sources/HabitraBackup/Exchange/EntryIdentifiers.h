#pragma once

#include <QZKit/UniqueID.h>

#include <cstdint>
#include <vector>

namespace habitra {

struct HabitraJSONBackup;
class StoreContext;

/// Whose the identifiers of the rows of a document become.
enum class IdentifierPolicy : std::uint8_t {
  keepWhereFree,  ///< an identifier that another row of the store has already is that one's
  giveNewOnes,
};

/// Tells which identifiers of entries are free while a document is brought in, without asking the store where the
/// document alone can say it: a whole life is mostly brought into an empty store.
class EntryIdentifiers {
 public:
  /// REQUIRES: a unit is open, `context` outlives this object, and what was in the store before is still there.
  EntryIdentifiers(StoreContext& context, const HabitraJSONBackup& document, IdentifierPolicy policy);

  /// Whether an entry of the document may bear its identifier; true once, when it is then inserted with it.
  [[nodiscard]] bool isFree(const qz::UniqueID& id) const;

 private:
  StoreContext& context_;
  IdentifierPolicy policy_;
  bool storeHasEntries_ = true;
  std::vector<qz::UniqueID> repeated_;  // those that the document has more than once, in order; of an empty store only
};

}  // namespace habitra
