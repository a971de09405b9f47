#include <HabitraCLI/DisplayText.h>
#include <HabitraCLI/HabitTable.h>

#include <fmt/format.h>
#include <algorithm>

namespace habitra {
namespace {

/// However narrow the terminal is, this much of a title is shown.
constexpr std::size_t leastTitleWidth = 8;
/// "[x] "
constexpr std::size_t markWidth = 4;

std::string padded(std::string text, std::size_t width) {
  const std::size_t used = displayWidth(text);
  if (used < width) text.append(width - used, ' ');
  return text;
}

}  // namespace

StatusMark StatusMark::of(const HabitSummary& habit) {
  using Kind = CompletionStatus::Status::Kind;
  if (!habit.status) return {"[?]", "its rule cannot be read", Colour::dim};
  switch (habit.status->status.kind()) {
    case Kind::positiveComplete: return {"[x]", "done", Colour::green};
    case Kind::positiveIncomplete: return {"[ ]", "open", Colour::plain};
    case Kind::positiveSkip: return {"[-]", "skipped", Colour::dim};
    case Kind::positiveMiss: return {"[!]", "missed", Colour::red};
    case Kind::negativeComplete: return {"[o]", "clean", Colour::green};
    case Kind::negativeMiss: return {"[!]", "failed", Colour::red};
    case Kind::negativeAllowedMiss: return {"[~]", "an allowed miss", Colour::yellow};
  }
  return {"[?]", "unknown", Colour::dim};
}

void HabitTable::add(const HabitSummary& habit) {
  const bool showsLast = lastCompleted_ == LastCompleted::shown;
  const std::string_view word = habit.isNegative ? "clean" : "done";
  std::string last;
  if (showsLast && habit.lastCompleted)
    last = fmt::format("last {} {}", word, habit.lastCompleted->debugDescription());
  else if (showsLast)
    last = fmt::format("never {}", word);
  lines_.push_back({.kind = Kind::habit,
                    .status = StatusMark::of(habit),
                    .title = displayable(habit.title),
                    .figures = {fmt::to_string(habit.streak.current), fmt::to_string(habit.streak.best), last}});
}

void HabitTable::addHeading(std::string_view heading) {
  if (!lines_.empty()) addEmptyLine();
  lines_.push_back({.kind = Kind::heading, .title = std::string(heading), .figures = {}});
}

void HabitTable::addEmptyLine() { lines_.push_back({.kind = Kind::empty, .title = {}, .figures = {}}); }

std::string HabitTable::text(const Terminal& terminal) const {
  std::size_t title = 0;
  std::array<std::size_t, 3> widths{};
  for (const Line& line : lines_) {
    if (line.kind != Kind::habit) continue;
    title = std::max(title, displayWidth(line.title));
    for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], line.figures[i].size());
  }
  const auto figures = [&](const Line& line) {
    std::string text =
        fmt::format("  streak {:>{}}  best {:>{}}", line.figures[0], widths[0], line.figures[1], widths[1]);
    if (widths[2] > 0) text += "  " + line.figures[2];
    return text;
  };
  if (terminal.columns) {
    const std::size_t others =
        markWidth + figures(Line{.kind = Kind::habit, .title = {}, .figures = {}}).size() + widths[2];
    title = std::min(title, std::max(leastTitleWidth, *terminal.columns - std::min(*terminal.columns, others)));
  }

  std::string text;
  for (const Line& line : lines_) {
    if (line.kind == Kind::heading) text += terminal.paint(Colour::bold, line.title);
    if (line.kind == Kind::habit) {
      text += terminal.paint(line.status.colour, line.status.mark) + " ";
      text += padded(cutToWidth(line.title, title), title) + figures(line);
    }
    text += '\n';
  }
  return text;
}

}  // namespace habitra
