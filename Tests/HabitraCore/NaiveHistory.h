#pragma once

#include <HabitraCore/HistoryWalk.h>

#include <span>
#include <string>
#include <vector>

namespace habitra {

/// The rules once more, from their words and with no thought of speed: every day looks through the whole log and all
/// the periods before it. One line of text per period, and one for the figures.
[[nodiscard]] std::vector<std::string> naiveHistory(const TaskRules& rules, const HistoryScope& scope,
                                                    std::span<const LoggedEntry> log);

/// The same lines from the walk.
[[nodiscard]] std::string lineOf(const WalkedPeriod& walked);
[[nodiscard]] std::string lineOf(const TaskFigures& figures);

}  // namespace habitra
