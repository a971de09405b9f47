#pragma once

#include <HabitraModel/UndoStack.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "../Store/StoreFixture.h"

namespace habitra {

/// Commands given and taken back in a store in a file, where no processor runs unless a test does what it would do.
class UndoStackTest : public StoreTest {
 protected:
  std::int64_t save(const std::optional<std::string>& command) {
    clock_->advance(std::chrono::minutes(1));
    return context_->save({.command = command}).sequence;
  }
  TaskEntity& add(const std::string& title) {
    TaskEntity values = titled(title);
    values.status = "active";
    TaskEntity& task = context_->insert(values);
    save("add '" + title + "'");
    return task;
  }
  std::int64_t record(ObjectID task, std::int32_t day, const std::string& command) {
    context_->insertLogEntry(entryOn(task, day));
    return save(command);
  }
  void undo(std::optional<std::int64_t> sequence = std::nullopt) {
    finish(sequence ? stack_.undo(*context_, *sequence) : stack_.undo(*context_));
  }
  void redo() { finish(stack_.redo(*context_)); }
  void finish(const UndoStack::Undone& undone) {
    clock_->advance(std::chrono::minutes(1));
    context_->save(undone.saveRequest(Author::siri, "undo " + undone.command.text));
  }
  std::optional<UndoStack::Error> refusal(std::optional<std::int64_t> sequence = std::nullopt) {
    try {
      undo(sequence);
    } catch (const UndoStack::Error& error) {
      EXPECT_FALSE(context_->isInUnit());
      EXPECT_FALSE(context_->hasChanges());
      return error;
    }
    return std::nullopt;
  }
  std::vector<std::string> standing() {
    std::vector<std::string> texts;
    for (const auto& command : stack_.list(*context_)) texts.push_back(command.text);
    return texts;
  }
  /// Every row of every entity as the engine gives it.
  std::vector<std::string> rows() const {
    std::vector<std::string> all;
    for (const EntityDescription* entity : allEntities())
      for (const auto& row : runSQL(file(), "SELECT * FROM " + std::string(entity->name) + " ORDER BY objectID"))
        all.push_back(std::string(entity->name) + " " + row);
    return all;
  }

  std::unique_ptr<StoreContext> context_ = open();
  TaskCalendars calendars_{qz::TimeZone::utc(), qz::HHMMSS::midnight};
  UndoStack stack_{calendars_};
};

}  // namespace habitra
