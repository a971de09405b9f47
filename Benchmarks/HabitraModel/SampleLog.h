#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

#include <vector>

namespace habitra::benchmarks {

/// `count` entries of one task on consecutive days from 2014-01-01 on, as a person's log has them: every attribute that
/// the recorder fills is filled, identifiers are time-ordered.
[[nodiscard]] std::vector<TaskLogEntryEntity> sampleLog(ObjectID task, int count);

}  // namespace habitra::benchmarks
