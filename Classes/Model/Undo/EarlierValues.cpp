#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/UndoBackups.h>
#include <HabitraModel/Store/History/HistoryTable.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Undo/EarlierValues.h>
#include <HabitraModel/UndoStack.h>

#include <fmt/format.h>

#include <utility>

namespace habitra {

EarlierValues::EarlierValues(StoreContext& context, StoredTransaction transaction, std::string refusal)
    : context_(context), transaction_(std::move(transaction)), refusal_(std::move(refusal)) {}

EarlierValues::~EarlierValues() = default;

void EarlierValues::openBackup() {
  if (!transaction_.backup) fail("what was there before is no longer known");
  const std::filesystem::path file = undoBackupFolder(context_.store().file()) / *transaction_.backup;
  try {
    if (!hasUndoBackup(context_.store().file(), *transaction_.backup) || !isPrivateFile(file))
      fail(fmt::format("the backup {} is gone", file.string()));
    backup_ = std::make_unique<Connection>(StoreFile::immutableAddress(file), file, Connection::Access::readOnly);
    if (backup_->integer("PRAGMA user_version") != Store::schemaVersion)
      fail(fmt::format("the backup {} was made by another version", file.string()));
    if (!wasMadeBefore()) fail(fmt::format("{} is not the backup made before it", file.string()));
  } catch (const StoreError& error) {
    fail(error.what());
  }
}

bool EarlierValues::wasMadeBefore() {
  const std::int64_t newest = transaction_.sequence - 1;
  Statement meta(*backup_, "SELECT storeIdentifier, newestSequence FROM habitra_meta");
  if (!meta.step() || meta.integer(1) != newest) return false;
  // A store that took the place of another has an identifier of its own, but the history of the one it is a copy of;
  // that one's identifier is in the name that the transaction gives.
  const std::string identifier(meta.text(0));
  if (identifier != context_.storeIdentifier() &&
      !undoBackups(context_.store().file(), identifier).contains(*transaction_.backup))
    return false;
  std::optional<StoredTransaction> present;
  std::optional<StoredTransaction> copied;
  context_.readTransactions(
      newest - 1, [&present](const StoredTransaction& transaction) { present = transaction; }, 1);
  HistoryTable(*backup_).readTransactions(newest - 1, 1, [&copied](const auto& transaction) { copied = transaction; });
  // It may be no longer in the history.
  return !present || present->sequence != newest || present == copied;
}

void EarlierValues::read(const StoredChange& change, const EntityDescription& entity, void* object) {
  if (restoreBefore(change, entity, object)) return;
  if (backup_ == nullptr) openBackup();
  const auto table = tables_.try_emplace(entity.number, *backup_, entity).first;
  auto rows = table->second.where("objectID").use();
  rows->bind(1, rawValue(change.object));
  if (!rows->step())
    fail(fmt::format("row {} of {} is not in {}", rawValue(change.object), entity.name, backup_->file().string()));
  table->second.load(*rows, object);
}

bool EarlierValues::readIfKnown(const StoredChange& change, const EntityDescription& entity, void* object) {
  if (change.kind == ChangeKind::insertion || isUnusable_) return false;
  try {
    read(change, entity, object);
    return true;
  } catch (const UndoStack::Error&) {
    isUnusable_ = true;
    return false;
  }
}

void EarlierValues::fail(std::string_view why) const {
  throw UndoStack::Error(UndoStack::Error::Reason::valuesGone, fmt::format("{}: {}", refusal_, why));
}

}  // namespace habitra
