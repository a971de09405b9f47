#include <HabitraModel/Undo/CommandList.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace habitra {

UndoStack::Command CommandList::Entry::command() const {
  return {.sequence = transaction.sequence, .text = transaction.command.value_or(""), .moment = transaction.moment};
}

CommandList::CommandList(StoreContext& context) {
  context.readCommands([this](const StoredTransaction& transaction) { entries_.push_back({transaction}); },
                       UndoStack::reach);
  std::map<std::int64_t, Kind> kinds;
  std::for_each(entries_.rbegin(), entries_.rend(), [&kinds](Entry& entry) {
    if (const auto& undoes = entry.transaction.undoes) {
      const auto target = kinds.find(*undoes);
      entry.kind = target != kinds.end() && target->second == Kind::undo ? Kind::redo : Kind::undo;
    }
    kinds.emplace(entry.transaction.sequence, entry.kind);
  });
  // What was taken back took nothing back.
  std::set<std::int64_t> takenBack;
  for (Entry& entry : entries_) {
    entry.isTakenBack = takenBack.contains(entry.transaction.sequence);
    if (entry.transaction.undoes && !entry.isTakenBack) takenBack.insert(*entry.transaction.undoes);
  }
}

const CommandList::Entry* CommandList::find(std::int64_t sequence) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.transaction.sequence == sequence; });
  return found == entries_.end() ? nullptr : &*found;
}

const CommandList::Entry* CommandList::newest() const {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.stands(); });
  return found == entries_.end() ? nullptr : &*found;
}

const CommandList::Entry* CommandList::newestUndo() const {
  for (const Entry& entry : entries_) {
    if (entry.isTakenBack || entry.kind == Kind::redo) continue;
    return entry.kind == Kind::undo ? &entry : nullptr;
  }
  return nullptr;
}

std::string CommandList::refusal(const Entry& entry) const {
  const Entry* const putBack = entry.kind == Kind::undo ? find(*entry.transaction.undoes) : nullptr;
  return putBack == nullptr ? fmt::format("'{}' cannot be undone", entry.command().text)
                            : fmt::format("'{}' cannot be redone", putBack->command().text);
}

}  // namespace habitra
