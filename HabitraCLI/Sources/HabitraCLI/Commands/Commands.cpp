#include <HabitraCLI/Commands/Commands.h>

#include <array>

namespace habitra {

std::span<const Command* const> allCommands() {
  static constexpr std::array<const Command*, 13> commands{
      &todayCommand,   &doneCommand,   &skipCommand,         &undoCommand,    &addCommand,
      &listCommand,    &importCommand, &exportCommand,       &restoreCommand, &sampleCommand,
      &processCommand, &watchCommand,  &healthImportCommand,
  };
  return commands;
}

}  // namespace habitra
