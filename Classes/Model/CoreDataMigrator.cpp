#include <HabitraModel/CoreDataMigrator.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/SchemaMigration.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/StoreCopy.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/Files/UnfinishedCopy.h>
#include <HabitraModel/Store/Files/WritersTurn.h>
#include <HabitraModel/Store/RowVerification.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

using Kind = StoreError::Kind;
using Access = Connection::Access;

/// The path without links of a store that is there.
std::filesystem::path existingStore(const std::filesystem::path& store) {
  if (store.empty()) throw StoreError(Kind::failed, "the path of a store is empty; say where it lies");
  const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(store).parent_path());
  if (home.empty() || !isPrivateFile(home / store.filename()))
    throw StoreError(Kind::failed, fmt::format("there is no store at {}; check the path", store.string()));
  return home / store.filename();
}

/// The version of a store that this program can bring up to date or open.
std::int64_t versionOf(Connection& connection) {
  const std::string name = connection.file().string();
  const std::int64_t version = connection.integer("PRAGMA user_version");
  if (connection.integer("PRAGMA application_id") != Store::applicationID || version < 1)
    throw StoreError(Kind::notAStore, fmt::format("{} is not a Habitra store; check the path", name));
  if (version > Store::schemaVersion)
    throw StoreError(
        Kind::newerVersion,
        fmt::format("{} was made by a newer version of Habitra; bring Habitra up to date to open it", name));
  return version;
}

std::unique_ptr<Connection> openToRead(const std::filesystem::path& file, bool isAtRest = false) {
  return std::make_unique<Connection>(isAtRest ? StoreFile::addressAtRest(file) : StoreFile::at(file).address, file,
                                      Access::readOnly);
}

bool isInside(const std::filesystem::path& file, const std::filesystem::path& folder) {
  return file.native().starts_with((folder / "").native());
}

/// Refuses a store that cannot be opened here, and one some of whose rows are not what was written.
void fillWithWholeStore(UnfinishedCopy& copy, Connection& source) {
  source.execute("BEGIN");
  (void)versionOf(source);
  const RowVerification found = RowVerification::of(source);
  if (!found.damaged.empty()) {
    const DamagedRow& first = found.damaged.front();
    throw StoreError(
        Kind::damaged,
        fmt::format("{} has {} damaged rows, first row {} of {} ({}); choose another backup", source.file().string(),
                    found.damaged.size(), rawValue(first.object), entityWithNumber(first.entity)->name, first.reason));
  }
  copy.fillFrom(source);
}

/// Leaves nothing of a store in its write-ahead log.
void moveLogIntoFile(Connection& connection) {
  if (connection.integer("PRAGMA wal_checkpoint(TRUNCATE)") != 0)
    throw StoreError(Kind::busy,
                     fmt::format("{} is in use by another program; end it and try again", connection.file().string()));
}

/// Makes a copy that nobody else has seen yet one that can be opened, all of which is in its file; `change` may change
/// more. `name` is for messages.
void finishCopy(const std::filesystem::path& copy, const std::filesystem::path& name,
                const std::function<void(Connection&)>& change) {
  {
    Connection connection(copy.string(), name, Access::readWrite);
    connection.execute("PRAGMA journal_mode=WAL");
    change(connection);
    moveLogIntoFile(connection);
  }
  for (const char* suffix : {"-wal", "-shm"}) std::filesystem::remove(copy.string() + suffix);
}

void giveNewIdentifier(Connection& connection, qz::Moment now) {
  Statement update(connection, "UPDATE habitra_meta SET storeIdentifier=?");
  const std::string identifier = qz::UniqueID::generate(now).text();
  update.bind(1, std::string_view(identifier));
  update.step();
}

/// Removes the engine's own files beside a store, so that no log of the old one meets a new one.
void removeLogs(const std::filesystem::path& file) {
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    const std::string log = file.string() + suffix;
    if (::unlink(log.c_str()) != 0 && errno != ENOENT) failWithErrno("cannot remove", log);
  }
  flushFolder(file.parent_path());
}

/// Takes back a backup that is not needed after all. REQUIRES: its names were free.
void removeBackup(const std::filesystem::path& backup) noexcept {
  for (const char* suffix : {"", "-wal", "-journal"}) ::unlink((backup.string() + suffix).c_str());
}

/// Keeps a store that can be read, all of which is in its file then. Gives false, and keeps nothing, when it cannot.
bool keepWhole(const std::filesystem::path& file, const std::filesystem::path& backup) {
  if (!isPrivateFile(file)) return false;
  try {
    Connection connection(file.string(), file, Access::readWrite);
    copyStore(file, backup);
    moveLogIntoFile(connection);
    return true;
  } catch (const StoreError& error) {
    if (error.kind() != Kind::damaged && error.kind() != Kind::notAStore) throw;
  }
  removeBackup(backup);
  return false;
}

/// Keeps the bytes of what is no whole store, with whatever its logs may yet be good for.
void keepBytes(const std::filesystem::path& file, const std::filesystem::path& backup) {
  for (const char* suffix : {"", "-wal", "-journal"}) {
    if (!isPrivateFile(file.string() + suffix)) continue;
    UnfinishedCopy copy(backup.string() + suffix);
    copy.fillWithBytesOf(file.string() + suffix);
    copy.finish();
  }
}

}  // namespace

/// A home to oneself: no store of it is open, and nobody writes.
class CoreDataMigrator::Maintenance {
 public:
  Maintenance(const std::filesystem::path& home, std::chrono::milliseconds patience) : Maintenance(patience, home) {
    lock_.takeExclusive();
    turn_.take();
  }

  /// Null when, before it could begin, `isNeeded` says no.
  static std::unique_ptr<const Maintenance> beginWhile(const std::function<bool()>& isNeeded,
                                                       const std::filesystem::path& home,
                                                       std::chrono::milliseconds patience) {
    std::unique_ptr<Maintenance> maintenance(new Maintenance(patience, home));
    if (!maintenance->lock_.takeExclusiveWhile(isNeeded)) return nullptr;
    maintenance->turn_.take();
    return maintenance;
  }

  [[nodiscard]] bool isOf(const std::filesystem::path& home) const { return home == home_; }

 private:
  Maintenance(std::chrono::milliseconds patience, const std::filesystem::path& home)
      : home_(home), lock_(home, patience), turn_(home, patience) {}

  std::filesystem::path home_;
  MaintenanceLock lock_;
  WritersTurn turn_;
};

CoreDataMigrator::CoreDataMigrator(std::shared_ptr<const qz::Clock> clock, Options options)
    : clock_(std::move(clock)), options_(std::move(options)) {}

std::int64_t CoreDataMigrator::migratorVersion() const { return Store::schemaVersion; }

bool CoreDataMigrator::needsMigration(const std::filesystem::path& store) const {
  const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(store).parent_path());
  const std::filesystem::path file = home / store.filename();
  if (home.empty() || !isPrivateFile(file) || std::filesystem::file_size(file) == 0) return false;
  return versionOf(*openToRead(file)) < migratorVersion();
}

void CoreDataMigrator::migrate(const std::filesystem::path& store) {
  const std::filesystem::path file = existingStore(store);
  // Another program may be quicker, and keep the store open.
  const auto maintenance =
      Maintenance::beginWhile([&] { return needsMigration(file); }, file.parent_path(), options_.patience);
  if (maintenance == nullptr) return;
  Connection connection(file.string(), file, Access::readWrite);
  const std::int64_t version = versionOf(connection);
  if (version == migratorVersion()) return;
  step("copy");
  copyStore(file, newBackup(file, fmt::format("version-{}", version)));
  migrateSchema(connection, options_.beforeStep);
  step("checkpoint");
  connection.checkpoint();
}

std::optional<std::filesystem::path> CoreDataMigrator::adoptProductionStore(const std::filesystem::path& home) {
  using File = DataManager::StoreFile;
  const std::filesystem::path folder = existingHomeFolder(home);
  if (folder.empty()) return std::nullopt;
  const auto path = [&folder](File file) { return folder / DataManager::fileName(file); };
  const auto mustAdopt = [&path] {
    return !isPrivateFile(path(File::local)) && !isPrivateFile(path(File::cloudKit)) &&
           isPrivateFile(path(File::production));
  };
  if (!mustAdopt()) return std::nullopt;
  if (!StoreFile::mayWrite(folder)) return path(File::production);
  // Another program may be quicker, and keep the store open.
  const auto maintenance = Maintenance::beginWhile(mustAdopt, folder, options_.patience);
  if (maintenance != nullptr && mustAdopt()) adopt(path(File::production), path(File::local));
  return path(File::local);
}

void CoreDataMigrator::adopt(const std::filesystem::path& production, const std::filesystem::path& local) const {
  UnfinishedCopy incoming(local);
  step("adopt");
  {
    const auto source = openToRead(production, true);
    source->execute("BEGIN");
    (void)versionOf(*source);
    incoming.fillFrom(*source);
  }
  finishCopy(incoming.file(), production, [this](Connection& connection) { bringUpToDate(connection); });
  // Only now, when it can be opened.
  step("adopted");
  incoming.finish();
}

std::shared_ptr<const CoreDataMigrator::Maintenance> CoreDataMigrator::beginMaintenance(
    const std::filesystem::path& home) const {
  return std::make_shared<const Maintenance>(makeHomeFolder(std::filesystem::absolute(home)), options_.patience);
}

std::optional<std::filesystem::path> CoreDataMigrator::replaceStore(const std::filesystem::path& store,
                                                                    const std::filesystem::path& with) {
  return replaceStore(store, with, *beginMaintenance(std::filesystem::absolute(store).parent_path()));
}

std::optional<std::filesystem::path> CoreDataMigrator::replaceStore(const std::filesystem::path& store,
                                                                    const std::filesystem::path& with,
                                                                    const Maintenance& maintenance) {
  const std::filesystem::path source = existingStore(with);
  const std::filesystem::path home = makeHomeFolder(std::filesystem::absolute(store).parent_path());
  const std::filesystem::path file = home / store.filename();
  if (file == source)
    throw StoreError(Kind::failed, fmt::format("{} cannot take its own place; choose another", file.string()));
  qz::require(maintenance.isOf(home), "a store is replaced under the maintenance of another home");

  UnfinishedCopy incoming(file);
  step("stage");
  fillWithWholeStore(incoming, *openToRead(source, isInside(source, home)));
  step("identify");
  finishCopy(incoming.file(), source, [this](Connection& connection) {
    bringUpToDate(connection);
    giveNewIdentifier(connection, clock_->now());
  });
  const std::filesystem::path backup = newBackup(file, "replaced");
  bool isWhole = true;
  try {
    step("keep");
    isWhole = keepWhole(file, backup);
    if (!isWhole) keepBytes(file, backup);
    step("remove the logs");
  } catch (...) {
    removeBackup(backup);
    throw;
  }
  try {
    removeLogs(file);
    step("replace");
    incoming.replace();
  } catch (...) {
    // What was no whole store may have lost its log.
    if (isWhole && !incoming.isFinished()) removeBackup(backup);
    throw;
  }
  step("replaced");
  return std::filesystem::exists(backup) ? std::optional(backup) : std::nullopt;
}

std::filesystem::path CoreDataMigrator::newBackup(const std::filesystem::path& file, std::string_view reason) const {
  const auto now = std::chrono::time_point_cast<std::chrono::seconds>(clock_->now());
  const std::string name =
      (backupFolder(file.parent_path()) / file.stem()).string() + fmt::format("-{}-{:%Y%m%dT%H%M%SZ}", reason, now);
  std::filesystem::path backup = name + ".sqlite";
  for (int i = 2; !isFreeForCopy(backup); ++i) backup = fmt::format("{}-{}.sqlite", name, i);
  return backup;
}

void CoreDataMigrator::bringUpToDate(Connection& copy) const {
  if (versionOf(copy) < migratorVersion()) migrateSchema(copy, options_.beforeStep);
}

void CoreDataMigrator::step(std::string_view name) const {
  if (options_.beforeStep) options_.beforeStep(name);
}

}  // namespace habitra
