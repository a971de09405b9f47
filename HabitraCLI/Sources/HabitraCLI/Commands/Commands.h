#pragma once

#include <HabitraCLI/Command.h>

#include <span>

namespace habitra {

extern const Command todayCommand;
extern const Command doneCommand;
extern const Command skipCommand;
extern const Command undoCommand;
extern const Command addCommand;
extern const Command listCommand;
extern const Command importCommand;
extern const Command exportCommand;
extern const Command processCommand;
extern const Command healthImportCommand;
extern const Command watchCommand;
extern const Command restoreCommand;
extern const Command sampleCommand;

/// The option of the verbs that also take another day than today.
inline constexpr Option dateOption{"--date", "DAY",
                                   "another day: 2024-01-31, 20240131, today, yesterday, or -2 for two days ago"};

/// Every verb, those first that a person uses most.
[[nodiscard]] std::span<const Command* const> allCommands();

}  // namespace habitra
