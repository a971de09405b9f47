#include <HabitraModel/Store/Files/UndoBackups.h>
#include <HabitraModel/Store/History/HistoryTrimming.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string>

namespace habitra {

namespace {

constexpr std::int64_t noSequence = std::numeric_limits<std::int64_t>::max();

/// Commands whose values before go in one call.
constexpr std::int64_t commandsAtOnce = 64;

/// Steps that trimDaily() takes at most: more than a day of a great many habits makes, and some seconds.
constexpr int stepsPerDay = 40;

bool wasTrimmedToday(const KeyValueDefaults::Values& values, qz::Moment now) {
  const auto found = values.find(HistoryTrimming::trimmedKey);
  const auto* const last = found == values.end() ? nullptr : found->second.as<qz::Moment>();
  return last != nullptr && *last <= now && now - *last < std::chrono::hours(24);
}

}  // namespace

/// One call: what it finds to do, and the doing.
class HistoryTrimming::Step {
 public:
  Step(StoreContext& context, const std::vector<HistoryReader>& readers, qz::Moment now, Limits limits)
      : context_(context),
        connection_(context.parts_->unit.connection()),
        readers_(readers),
        now_(now),
        limits_(limits) {}

  /// Looks without the turn whether there is anything to do.
  [[nodiscard]] bool isDue() {
    context_.refresh();
    context_.parts_->beginView();
    const bool isDue = lastToGo() > 0 || hasOrphans() || !commandsOutOfReach().empty() || !backupsOutOfReach().empty();
    context_.refresh();
    return isDue;
  }

  Report run() {
    context_.beginUnit();
    try {
      const std::set<std::string> backups = backupsOutOfReach();
      removeTransactions(lastToGo());
      removeOrphans();
      dropValuesBefore();
      remove(backups);
      context_.parts_->unit.commit(std::nullopt);
    } catch (...) {
      context_.rollback();
      throw;
    }
    return report_;
  }

 private:
  /// The oldest transaction that can still be undone.
  [[nodiscard]] std::int64_t firstUndoable() {
    return context_.parts_->history.firstCommand(undoableCommands).value_or(noSequence);
  }

  /// The last transaction that every reader who counts has read.
  [[nodiscard]] std::int64_t lastReadByAll() {
    const std::string identifier = context_.storeIdentifier();
    std::int64_t last = noSequence;
    for (const HistoryReader& reader : readers_)
      if (reader.token.storeIdentifier == identifier && now_ - reader.lastRead <= readerForgottenAfter)
        last = std::min(last, reader.token.sequence);
    return last;
  }

  /// The last of the oldest transactions that may go now; 0 when there is none.
  [[nodiscard]] std::int64_t lastToGo() {
    Statement oldest(connection_,
                     "SELECT sequence, moment FROM habitra_transaction WHERE sequence<? AND sequence<=? "
                     "ORDER BY sequence LIMIT ?");
    oldest.bind(1, firstUndoable());
    oldest.bind(2, lastReadByAll());
    oldest.bind(3, limits_.transactions);
    const std::int64_t latest = (now_ - youngestToGo).time_since_epoch().count();
    std::int64_t last = 0;
    while (oldest.step() && oldest.integer(1) < latest) last = oldest.integer(0);
    return last;
  }

  /// The transaction goes first, so that nobody takes what is left of its changes for all of them.
  void removeTransactions(std::int64_t last) {
    Statement remove(connection_, "DELETE FROM habitra_transaction WHERE sequence<=?");
    remove.bind(1, last);
    remove.step();
    report_.transactions = changedRows();
  }

  [[nodiscard]] std::int64_t oldestKept() { return context_.oldestKeptSequence(); }

  [[nodiscard]] bool hasOrphans() {
    Statement orphan(connection_, "SELECT 1 FROM habitra_change WHERE sequence<? LIMIT 1");
    orphan.bind(1, oldestKept());
    return orphan.step();
  }

  void removeOrphans() {
    Statement remove(connection_,
                     "DELETE FROM habitra_change WHERE (sequence, entity, object) IN "
                     "(SELECT sequence, entity, object FROM habitra_change WHERE sequence<? "
                     "ORDER BY sequence, entity, object LIMIT ?)");
    remove.bind(1, oldestKept());
    remove.bind(2, limits_.changes);
    remove.step();
    report_.changes = changedRows();
  }

  /// The newest first.
  [[nodiscard]] std::vector<std::int64_t> commandsOutOfReach() {
    Statement commands(connection_,
                       "SELECT sequence FROM habitra_transaction AS given WHERE command IS NOT NULL AND sequence<? "
                       "AND EXISTS (SELECT 1 FROM habitra_change AS change WHERE change.sequence=given.sequence "
                       "AND before IS NOT NULL) ORDER BY sequence DESC LIMIT ?");
    commands.bind(1, firstUndoable());
    commands.bind(2, commandsAtOnce);
    std::vector<std::int64_t> sequences;
    while (commands.step()) sequences.push_back(commands.integer(0));
    return sequences;
  }

  void dropValuesBefore() {
    for (const std::int64_t sequence : commandsOutOfReach()) {
      if (report_.valuesBefore >= limits_.changes) return;
      context_.parts_->history.dropBefore(sequence);
      report_.valuesBefore += changedRows();
    }
  }

  /// Copies of this store that no command in reach names, and those named by a command out of reach: in a store that
  /// was restored they bear the identifier that it had before.
  [[nodiscard]] std::set<std::string> backupsOutOfReach() {
    if (context_.store().isInMemory()) return {};
    std::set<std::string> names = undoBackups(context_.store().file(), context_.storeIdentifier());
    const std::int64_t first = firstUndoable();
    Statement rows(connection_,
                   "SELECT backup, sequence FROM habitra_transaction WHERE command IS NOT NULL AND backup IS NOT NULL");
    while (rows.step()) {
      const std::string name(rows.text(0));
      if (rows.integer(1) >= first)
        names.erase(name);
      else if (hasUndoBackup(context_.store().file(), name))
        names.insert(name);
    }
    return names;
  }

  /// Under the turn no copy is being made.
  void remove(const std::set<std::string>& backups) {
    for (const std::string& name : backups)
      if (removeUndoBackup(context_.store().file(), name)) ++report_.backups;
  }

  [[nodiscard]] std::int64_t changedRows() { return connection_.integer("SELECT changes()"); }

  StoreContext& context_;
  Connection& connection_;
  const std::vector<HistoryReader>& readers_;
  qz::Moment now_;
  Limits limits_;
  Report report_;
};

auto HistoryTrimming::trim(StoreContext& context, const std::vector<HistoryReader>& readers, qz::Moment now,
                           Limits limits) -> Report {
  qz::require(!context.isInUnit() && !context.hasChanges(), "history is trimmed in the midst of a unit");
  if (context.store().isReadOnly()) return {};
  Step step(context, readers, now, limits);
  return step.isDue() ? step.run() : Report{};
}

auto HistoryTrimming::trimDaily(StoreContext& context, KeyValueDefaults& defaults, qz::Moment now) -> Report {
  Report total;
  if (context.store().isReadOnly()) return total;
  bool isOld = false;
  context.readTransactions(
      0, [&](const StoredTransaction& oldest) { isOld = now - oldest.moment > youngestToGo; }, 1);
  if (!isOld || wasTrimmedToday(defaults.values(), now)) return total;
  const std::vector<HistoryReader> readers = historyReaders(defaults);
  for (int i = 0; i < stepsPerDay; ++i) {
    const Report report = trim(context, readers, now);
    if (report == Report{}) break;
    total.transactions += report.transactions;
    total.changes += report.changes;
    total.valuesBefore += report.valuesBefore;
    total.backups += report.backups;
  }
  defaults.set(trimmedKey, now);
  return total;
}

}  // namespace habitra
