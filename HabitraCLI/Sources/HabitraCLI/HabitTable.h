#pragma once

#include <HabitraApp/HabitSummary.h>
#include <HabitraCLI/Terminal.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// How a habit's current period shows in front of its title:
///
///   [x] done     [ ] open      [-] skipped          [!] missed, or a habit to avoid that was done
///   [o] a habit to avoid, clean so far              [~] the same, done within the allowance
///   [?] the stored rule cannot be read
struct StatusMark {
  std::string_view mark;
  std::string_view word;  ///< "done"
  Colour colour;

  [[nodiscard]] static StatusMark of(const HabitSummary& habit);
};

/// Habits one per line, in columns that all lines share: mark, title, streak, best and, when asked for, the last
/// completed day. Titles are cut so that a line fits into the terminal.
class HabitTable {
 public:
  enum class LastCompleted { shown, hidden };

  explicit HabitTable(LastCompleted lastCompleted) : lastCompleted_(lastCompleted) {}

  void add(const HabitSummary& habit);
  /// A line of its own, after an empty one unless it is the first.
  void addHeading(std::string_view heading);
  void addEmptyLine();

  [[nodiscard]] std::string text(const Terminal& terminal) const;

 private:
  enum class Kind { habit, heading, empty };
  struct Line {
    Kind kind;
    StatusMark status{};
    std::string title;                   ///< or the heading
    std::array<std::string, 3> figures;  ///< streak, best, last completed
  };

  LastCompleted lastCompleted_;
  std::vector<Line> lines_;
};

}  // namespace habitra
