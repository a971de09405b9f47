#pragma once

#include <HabitraModel/Store/EntityDescription.h>

#include <string>
#include <vector>

namespace habitra {

class StoreContext;

/// A row whose content is not what was written.
struct DamagedRow {
  EntityNumber entity;
  ObjectID object;
  std::string reason;  ///< "does not match its checksum", or what cannot be read

  friend bool operator==(const DamagedRow&, const DamagedRow&) = default;
};

/// Compares every row of every entity with its checksum. Reads the whole store and changes nothing.
class StoreVerification {
 public:
  [[nodiscard]] static std::vector<DamagedRow> verifyChecksums(StoreContext& context);
};

}  // namespace habitra
