#include <HabitraCLI/Commands/Commands.h>

#include <array>

namespace habitra {

std::span<const Command* const> allCommands() {
  static constexpr std::array<const Command*, 9> commands{
      &todayCommand, &doneCommand,   &skipCommand,   &undoCommand,    &addCommand,
      &listCommand,  &importCommand, &exportCommand, &processCommand,
  };
  return commands;
}

}  // namespace habitra
