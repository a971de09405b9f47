#pragma once

#include <HabitraModel/Store/StoreContext.h>

#include <vector>

namespace habitra {

/// Lets the numbers of the rows of these entries, by whose order a walk reads a period, ascend in the order of the
/// list: rows exchange what they say, and requests to the health store go along. REQUIRES: a unit; entries as they are
/// stored.
void putRowsInOrder(StoreContext& context, const std::vector<TaskLogEntryEntity>& inOrder);

}  // namespace habitra
