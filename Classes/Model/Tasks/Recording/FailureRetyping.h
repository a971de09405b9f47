#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZDateTime/YYYYMMDD.h>

#include <set>
#include <span>

namespace habitra {

/// Lets the failures of a task to avoid say whether they lie within the allowance, once what stands on some days has
/// changed: those of these days, and those after them whose allowance depends on it. Of the log it reads the days that
/// decide that and no more: the counting period of each, as many days before and after it as the interval has, or the
/// period that holds it. Nothing for a task to do. REQUIRES: a unit.
void retypeFailures(StoreContext& context, const TaskEntity& task, const TaskRules& rules,
                    const std::set<qz::YYYYMMDD>& days);

/// Whether entries that count for a period, by day and order, fail it, which may be at its end.
[[nodiscard]] bool failPeriod(const TaskRules& rules, const TaskFrequencyPeriod& period,
                              std::span<const LoggedEntry> entries);

/// Whether the partial misses of a period fail it once `row`, one of them, stands in the log, where it may be already.
/// `rules`: those of its task.
[[nodiscard]] bool failsByParts(StoreContext& context, const TaskRules& rules, const TaskLogEntryEntity& row);

}  // namespace habitra
