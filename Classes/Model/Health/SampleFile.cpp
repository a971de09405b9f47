#include <HabitraModel/Health/SampleFile.h>
#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/Files/SystemFailure.h>

#include <fmt/format.h>

namespace habitra {

namespace {

constexpr FileFormat format{SampleStore::applicationID, SampleStore::schemaVersion};

/// Within a transaction.
void makeTables(Connection& connection) {
  connection.execute(SampleTable::definition().c_str());
  connection.execute(
      fmt::format("PRAGMA application_id={}; PRAGMA user_version={}", format.applicationID, format.version).c_str());
}

/// Whether the file of the session has the tables, or is empty. Throws StoreError when it is something else.
bool hasTables(SampleFile::Session& session) {
  if (!session.hasTables) session.hasTables = format.find(session.connection) != FileFormat::Found::nothing;
  return session.hasTables;
}

}  // namespace

SampleFile::Session::Session(const std::string& address, const std::filesystem::path& file, Connection::Access access)
    : connection(address, file, access),
      table(connection),
      turn(file.parent_path(), WritersTurn::defaultPatience, lockName),
      signal(file.parent_path() / signalName),
      beginView(connection, "BEGIN"),
      beginUnit(connection, "BEGIN IMMEDIATE"),
      isReadOnly(access == Connection::Access::readOnly) {}

SampleFile::Session::Session(const std::string& memoryAddress, std::shared_ptr<std::binary_semaphore> memoryTurn,
                             std::shared_ptr<const ChangeListeners> listeners)
    : connection(memoryAddress, {}, Connection::Access::memory),
      table(connection),
      turn(std::move(memoryTurn)),
      signal(std::move(listeners)),
      beginView(connection, "BEGIN"),
      beginUnit(connection, "BEGIN IMMEDIATE"),
      isReadOnly(false) {}

SampleFile::Use::~Use() {
  if (session_ == nullptr) return;
  session_->connection.rollback();
  if (session_->turn.isHeld()) session_->table.forget();
  session_->turn.release();
  file_->giveBack(std::move(session_));
}

void SampleFile::Use::commit(const SampleTable::Reaches& changed) {
  if (changed.empty()) return;
  const std::int64_t number = session_->table.keepChange(changed);
  session_->signal.prepare();
  session_->connection.execute("COMMIT");
  session_->signal.announce(number);
  session_->connection.shortenLog();
  session_->turn.release();
}

SampleFile::SampleFile()
    : memoryAddress_(StoreFile::newMemoryAddress()),
      memoryTurn_(std::make_shared<std::binary_semaphore>(1)),
      listeners_(std::make_shared<ChangeListeners>()) {
  keeper_ = connectInMemory();
  makeTables(keeper_->connection);
}

SampleFile::Use SampleFile::beginReading() {
  std::unique_ptr<Session> session = takeIdle();
  if (session == nullptr && isInMemory()) session = connectInMemory();
  if (session == nullptr) {
    const std::filesystem::path home = existingHomeFolder(std::filesystem::absolute(file_).parent_path());
    if (home.empty() || !isPrivateFile(home / file_.filename())) return {*this, nullptr};
    session = connect(home / file_.filename());
  }
  Use use(*this, std::move(session));
  if (isInMemory()) use->turn.take();
  use->beginView.use()->step();
  if (!hasTables(*use)) return {*this, nullptr};
  return use;
}

SampleFile::Use SampleFile::beginWriting() {
  std::unique_ptr<Session> session = takeIdle();
  if (session == nullptr && isInMemory()) session = connectInMemory();
  if (session == nullptr) {
    const std::filesystem::path file =
        makeHomeFolder(std::filesystem::absolute(file_).parent_path()) / file_.filename();
    if (!isPrivateFile(file)) makePrivateFile(file);
    session = connect(file);
  }
  Use use(*this, std::move(session));
  if (use->isReadOnly) failReadOnly(use->connection.file());
  // Looked at before anything is written to it: the file may be anything yet.
  const bool isNew = !hasTables(*use);
  use->turn.take();
  if (!isInMemory()) {
    tighten(use->connection.file());
    use->connection.execute("PRAGMA journal_mode=WAL");
  }
  use->beginUnit.use()->step();
  if (isNew && !hasTables(*use)) makeTables(use->connection);
  return use;
}

std::unique_ptr<StoreChangeWatcher> SampleFile::watch(std::function<void()> onChange) {
  if (isInMemory()) return std::make_unique<StoreChangeWatcher>(*listeners_, std::move(onChange));
  const std::filesystem::path folder = std::filesystem::absolute(file_).parent_path();
  const std::filesystem::path home = existingHomeFolder(folder);
  return std::make_unique<StoreChangeWatcher>((home.empty() ? folder : home) / signalName, std::move(onChange));
}

std::unique_ptr<SampleFile::Session> SampleFile::takeIdle() {
  const std::scoped_lock lock(mutex_);
  if (idle_.empty()) return nullptr;
  std::unique_ptr<Session> session = std::move(idle_.back());
  idle_.pop_back();
  return session;
}

void SampleFile::giveBack(std::unique_ptr<Session> session) noexcept {
  const std::scoped_lock lock(mutex_);
  idle_.push_back(std::move(session));
}

std::unique_ptr<SampleFile::Session> SampleFile::connect(const std::filesystem::path& file) const {
  for (const char* suffix : {"-wal", "-shm", "-journal"}) (void)isPrivateFile(file.string() + suffix);
  const StoreFile found = StoreFile::at(file);
  const auto access = found.isReadOnly ? Connection::Access::readOnly : Connection::Access::readWrite;
  return std::make_unique<Session>(found.address, file, access);
}

void SampleFile::tighten(const std::filesystem::path& file) {
  std::call_once(isTightened_, [&file] {
    for (const char* suffix : {"", "-wal", "-shm"}) tightenFile(file.string() + suffix);
    for (const char* name : {lockName, signalName}) tightenFile(file.parent_path() / name);
  });
}

std::unique_ptr<SampleFile::Session> SampleFile::connectInMemory() const {
  return std::make_unique<Session>(memoryAddress_, memoryTurn_, listeners_);
}

}  // namespace habitra
