#include <HabitraCLI/Commands/Commands.h>

#include <array>

namespace habitra {

std::span<const Command* const> allCommands() {
  static constexpr std::array<const Command*, 10> commands{
      &todayCommand, &doneCommand,   &skipCommand,   &undoCommand,    &addCommand,
      &listCommand,  &importCommand, &exportCommand, &processCommand, &healthImportCommand,
  };
  return commands;
}

}  // namespace habitra
