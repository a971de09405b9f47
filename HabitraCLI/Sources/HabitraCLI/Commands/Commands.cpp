#include <HabitraCLI/Commands/Commands.h>

#include <array>

namespace habitra {

std::span<const Command* const> allCommands() {
  static constexpr std::array<const Command*, 11> commands{
      &todayCommand,  &doneCommand,   &skipCommand,    &undoCommand,  &addCommand,          &listCommand,
      &importCommand, &exportCommand, &processCommand, &watchCommand, &healthImportCommand,
  };
  return commands;
}

}  // namespace habitra
