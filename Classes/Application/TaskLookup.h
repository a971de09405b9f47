#pragma once

#include <QZKit/Error.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// A name that is not the name of exactly one habit. The message lists the candidates, or the nearest titles.
class TaskNameError : public qz::Error {
 public:
  using Error::Error;
};

/// What a habit can be called by.
struct TaskName {
  qz::UniqueID uniqueId;
  std::string title;
};

/// The place in `tasks` of the one that `name` means: by identifier in any case, else by its whole title, else by its
/// whole title in any case, else by a start of its title in any case that no other title shares. The first of these
/// ways that finds anything decides. Throws TaskNameError when that is more than one task, or no way finds any.
[[nodiscard]] std::size_t lookUpTask(std::span<const TaskName> tasks, std::string_view name);

/// Those of `words` that are most like `word`, best first, at most `count`: close in edit distance, or containing it.
[[nodiscard]] std::vector<std::string> nearestMatches(std::string_view word, std::span<const std::string> words,
                                                      std::size_t count = 3);

/// The end of a message about a word that is not known: ", did you mean 'a', 'b' or 'c'?" with its nearest matches, or
/// nothing where there are none.
[[nodiscard]] std::string didYouMean(std::string_view word, std::span<const std::string> words);

}  // namespace habitra
