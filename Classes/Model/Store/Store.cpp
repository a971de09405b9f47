#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/FileFormat.h>
#include <HabitraModel/Store/Engine/Schema.h>
#include <HabitraModel/Store/Engine/SchemaMigration.h>
#include <HabitraModel/Store/Files/ChangeListeners.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/MemoryCopy.h>
#include <HabitraModel/Store/Files/StoreChangeSignal.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/WritersTurn.h>
#include <HabitraModel/Store/Store.h>
#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>

#include <fmt/format.h>

namespace habitra {

Store::Store(std::filesystem::path file, std::shared_ptr<const qz::Clock> clock, std::chrono::milliseconds patience)
    : file_(std::move(file)),
      address_(file_.string()),
      maintenance_(file_.parent_path(), patience),
      clock_(std::move(clock)),
      writer_(qz::UniqueID::generate(clock_->now()).text()) {}

Store::~Store() = default;

std::shared_ptr<Store> Store::open(const std::filesystem::path& file, std::shared_ptr<const qz::Clock> clock,
                                   std::chrono::milliseconds patience) {
  const std::filesystem::path home = makeHomeFolder(std::filesystem::absolute(file).parent_path());
  std::shared_ptr<Store> store(new Store(home / file.filename(), std::move(clock), patience));
  store->maintenance_.takeShared();
  if (!isPrivateFile(store->file_)) makePrivateFile(store->file_);
  if (!store->prepare(true))
    throw StoreError(
        StoreError::Kind::readOnly,
        fmt::format("{} is empty and cannot be written; give yourself the right to write it and its folder",
                    store->file_.string()));
  store->tighten();
  return store;
}

std::shared_ptr<Store> Store::openForReading(const std::filesystem::path& file, std::shared_ptr<const qz::Clock> clock,
                                             std::chrono::milliseconds patience) {
  const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(file).parent_path());
  if (home.empty() || !isPrivateFile(home / file.filename())) return nullptr;
  std::shared_ptr<Store> store(new Store(home / file.filename(), std::move(clock), patience));
  store->maintenance_.takeShared();
  return store->prepare(false) ? store : nullptr;
}

std::shared_ptr<Store> Store::inMemory(std::shared_ptr<const qz::Clock> clock) {
  std::shared_ptr<Store> store(new Store({}, std::move(clock)));
  store->address_ = StoreFile::newMemoryAddress();
  store->memoryTurn_ = std::make_shared<std::binary_semaphore>(1);
  store->listeners_ = std::make_shared<ChangeListeners>();
  store->keeper_ = store->makeConnection();
  store->makeSchema(*store->keeper_);
  return store;
}

std::unique_ptr<Connection> Store::makeConnection() const {
  const Connection::Access access = isInMemory()  ? Connection::Access::memory
                                    : isReadOnly_ ? Connection::Access::readOnly
                                                  : Connection::Access::readWrite;
  return std::make_unique<Connection>(address_, file_, access);
}

bool Store::prepare(bool mayMake) {
  for (const char* suffix : {"-wal", "-shm", "-journal"}) (void)isPrivateFile(file_.string() + suffix);
  const StoreFile found = StoreFile::at(file_);
  isReadOnly_ = found.isReadOnly;
  address_ = found.address;
  firstConnection_ = makeConnection();
  switch (FileFormat{applicationID, schemaVersion}.find(*firstConnection_)) {
    case FileFormat::Found::nothing:
      if (!mayMake || isReadOnly_) return false;
      makeSchema(*firstConnection_);
      return true;
    case FileFormat::Found::older:
      if (!isReadOnly_)
        throw StoreError(StoreError::Kind::olderVersion,
                         fmt::format("{} was made by an earlier version of Habitra; bring it up to date to open it",
                                     file_.string()));
      moveIntoMemory();
      return true;
    case FileFormat::Found::current: ensureLog(); return true;
  }
  return false;
}

void Store::ensureLog() {
  if (isReadOnly_) return;
  {
    Statement mode(*firstConnection_, "PRAGMA journal_mode");
    if (mode.step() && mode.text(0) == "wal") return;
  }
  const std::unique_ptr<WritersTurn> turn = makeTurn();
  turn->take();
  firstConnection_->execute("PRAGMA journal_mode=WAL");
}

void Store::tighten() {
  if (isInMemory() || isReadOnly_) return;
  std::call_once(isTightened_, [this] {
    for (const char* suffix : {"", "-wal", "-shm"}) tightenFile(file_.string() + suffix);
    for (const char* name : {WritersTurn::fileName, MaintenanceLock::fileName, StoreChangeSignal::fileName})
      tightenFile(file_.parent_path() / name);
  });
}

void Store::moveIntoMemory() {
  address_ = StoreFile::newMemoryAddress();
  keeper_ = copyIntoMemory(*firstConnection_, address_);
  migrateSchema(*keeper_, {});
  firstConnection_ = makeConnection();
}

void Store::makeSchema(Connection& connection) const {
  const std::unique_ptr<WritersTurn> turn = makeTurn();
  turn->take();
  // Another program may have been quicker.
  if (connection.integer("PRAGMA application_id") == applicationID) return;
  if (!isInMemory()) connection.execute("PRAGMA journal_mode=WAL");
  const std::string identifier = qz::UniqueID::generate(clock_->now()).text();
  connection.executeAtomically(schemaDefinition(identifier));
}

std::unique_ptr<Connection> Store::connect() {
  {
    const std::scoped_lock lock(firstConnectionMutex_);
    if (firstConnection_ != nullptr) return std::move(firstConnection_);
  }
  return makeConnection();
}

std::unique_ptr<WritersTurn> Store::makeTurn() const {
  if (isInMemory()) return std::make_unique<WritersTurn>(memoryTurn_);
  return std::make_unique<WritersTurn>(file_.parent_path());
}

StoreChangeSignal Store::makeSignal() const {
  if (isInMemory()) return StoreChangeSignal(listeners_);
  return StoreChangeSignal(file_.parent_path() / StoreChangeSignal::fileName);
}

ChangeListeners& Store::listeners() const {
  qz::require(isInMemory(), "a store in a file is listened to");
  return *listeners_;
}

ObjectID Store::nextObjectID(ObjectID newestStored) {
  // Only the writer whose turn it is comes here.
  newestGivenID_ = std::max(newestGivenID_.load(), rawValue(newestStored)) + 1;
  return ObjectID{newestGivenID_.load()};
}

}  // namespace habitra
