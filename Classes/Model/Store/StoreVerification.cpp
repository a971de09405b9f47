#include <HabitraModel/Store/RowCoding.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <HabitraModel/Store/StoreVerification.h>

namespace habitra {

std::vector<DamagedRow> StoreVerification::verifyChecksums(StoreContext& context) {
  StoreContext::Parts& parts = *context.parts_;
  parts.beginView();
  std::vector<DamagedRow> damaged;
  for (const EntityDescription* entity : allEntities()) {
    EntityTable& table = parts.table(*entity);
    OwnedObject row(*entity);
    auto rows = table.all().use();
    while (rows->step()) {
      try {
        if (table.load(*rows, row.get()) != rowChecksum(*entity, row.get()))
          damaged.push_back({entity->number, row.objectID(), "does not match its checksum"});
      } catch (const StoreError& error) {
        damaged.push_back({entity->number, row.objectID(), error.what()});
      }
    }
  }
  return damaged;
}

}  // namespace habitra
