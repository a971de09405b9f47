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
    changed,  ///< a stored task got entries, parts or settings
    left,     ///< a stored task that already had everything, or was not to be touched
    leftOut,  ///< a task of the document that was not brought in; a remark says why
  };

  /// Entries of one log, or of all.
  struct Entries {
    std::size_t added = 0;       ///< were not there yet
    std::size_t changed = 0;     ///< were there with other values, and took those of the document
    std::size_t removed = 0;     ///< of the store, gave way to those of the document
    std::size_t left = 0;        ///< of the document, were already there
    std::size_t passedOver = 0;  ///< of the document, not brought in: their task is left alone, or they were filled in
    std::size_t afterToday = 0;  ///< of the document, lie after the task's today; not brought in

    Entries& operator+=(const Entries& more);
    friend bool operator==(const Entries&, const Entries&) = default;
  };

  /// The same of rows other than entries.
  struct Rows {
    std::size_t added = 0;
    std::size_t changed = 0;
    std::size_t removed = 0;
    std::size_t left = 0;
    std::size_t passedOver = 0;

    [[nodiscard]] bool haveChanged() const { return added + changed + removed > 0; }
    Rows& operator+=(const Rows& more);
    friend bool operator==(const Rows&, const Rows&) = default;
  };

  struct Task {
    std::string title;
    std::string uniqueId;  ///< of the task in the store; empty for one that was left out
    Outcome outcome = Outcome::left;
    Entries entries;
    Rows notes = {};
    Rows parts = {};  ///< counters, timers, reminders, notification settings, places in categories and pauses
    std::vector<std::string> remarks = {};  ///< sentences for a person

    friend bool operator==(const Task&, const Task&) = default;
  };

  std::vector<Task> tasks = {};
  Rows pages = {};
  Rows categories = {};
  Rows settings = {};
  std::vector<std::string> remarks = {};  ///< on the document as a whole

  /// How many tasks met with this outcome.
  [[nodiscard]] std::size_t count(Outcome outcome) const;
  /// Those of all tasks together.
  [[nodiscard]] Entries entries() const;
  [[nodiscard]] Rows notes() const;
  [[nodiscard]] Rows parts() const;

  friend bool operator==(const ImportReport&, const ImportReport&) = default;
};

}  // namespace habitra
