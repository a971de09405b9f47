#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskMeasure.h>

#include <cstdint>
#include <optional>

/// What an entry says of an amount. The amount that an entry reports is what its period had reached with it: all that
/// was said before is part of it. An entry that reports none adds to what was reached.
namespace habitra {

/// The amount that the entry reports, in the unit of the measure: the amount itself, else the share of the target that
/// it names. None where it names neither, and of a task by hand, whose entries are counted.
[[nodiscard]] std::optional<double> reportedAmount(const LoggedEntry& entry, const TaskMeasure& measure);

/// What an entry adds that reports none: a run of a timed task its seconds, everything else one of the units that make
/// the target.
[[nodiscard]] double addedAmount(const LoggedEntry& entry, const TaskMeasure& measure, std::int64_t expectedUnits);

}  // namespace habitra
