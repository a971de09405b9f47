#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace habitra {

/// What an import did, task by task in the order of the document.
struct ImportReport {
  enum class Outcome : std::uint8_t {
    added,    ///< a new task
    changed,  ///< a stored task got entries or settings
    left,     ///< a stored task that already had everything, or was not to be touched
  };

  /// Entries of one log, or of all.
  struct Entries {
    std::size_t added = 0;       ///< were not there yet
    std::size_t changed = 0;     ///< were there with other values, and took those of the document
    std::size_t removed = 0;     ///< of the store, gave way to those of the document
    std::size_t left = 0;        ///< of the document, were already there
    std::size_t afterToday = 0;  ///< of the document, lie after the task's today; not brought in

    friend bool operator==(const Entries&, const Entries&) = default;
  };

  struct Task {
    std::string title;
    std::string uniqueId;  ///< of the task in the store
    Outcome outcome = Outcome::left;
    Entries entries;

    friend bool operator==(const Task&, const Task&) = default;
  };

  std::vector<Task> tasks;

  /// How many tasks met with this outcome.
  [[nodiscard]] std::size_t count(Outcome outcome) const;
  /// The entries of all tasks together.
  [[nodiscard]] Entries entries() const;

  friend bool operator==(const ImportReport&, const ImportReport&) = default;
};

}  // namespace habitra
