#include <HabitraModel/Store/RowVerification.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <HabitraModel/Store/StoreVerification.h>

namespace habitra {

std::vector<DamagedRow> StoreVerification::verifyChecksums(StoreContext& context) {
  StoreContext::Parts& parts = *context.parts_;
  parts.beginView();
  return RowVerification::of(parts.unit.connection()).damaged;
}

}  // namespace habitra
