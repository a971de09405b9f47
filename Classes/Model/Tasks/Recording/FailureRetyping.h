#pragma once

#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZDateTime/YYYYMMDD.h>

#include <set>

namespace habitra {

/// Lets the failures of a task to avoid say whether they lie within the allowance, once what stands on some days has
/// changed: those of these days, and those after them whose allowance depends on it. Of the log it reads the days that
/// decide that and no more: the counting period of each, or as many days before and after it as the interval has.
/// Nothing for a task to do. REQUIRES: a unit.
void retypeFailures(StoreContext& context, const TaskEntity& task, const TaskRules& rules,
                    const std::set<qz::YYYYMMDD>& days);

}  // namespace habitra
