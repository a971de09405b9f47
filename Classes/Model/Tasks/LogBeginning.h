#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraModel/Store/StoreContext.h>

#include <cstdint>

namespace habitra {

/// Where the log of a task begins, going by its entries of days up to `lastDay`, as it is stored.
[[nodiscard]] HistoryScope::LogBeginning beginningOfLog(StoreContext& context, ObjectID task, std::int32_t lastDay);

}  // namespace habitra
