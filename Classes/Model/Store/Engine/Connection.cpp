#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Files/StoreFile.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <sqlite3.h>

#include <limits>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

// How long a foreign program that locks the file is waited for; our own writers wait for their turn instead.
constexpr int busyMilliseconds = 10'000;
// Some 1 MiB: what the next opening has to read again, in a millisecond or less.
constexpr int longLogPages = 256;
// A log that is longer is cut off, at once or, where a reader was in the way, when it starts over.
constexpr int mostPagesLeft = 1'024;
constexpr int bytesOfPage = 4'096;

std::string systemMessage(sqlite3* handle) {
  const int error = handle == nullptr ? 0 : sqlite3_system_errno(handle);
  return error == 0 ? "the system refuses" : std::generic_category().message(error);
}

StoreError errorFor(int code, sqlite3* handle, const std::string& name) {
  using Kind = StoreError::Kind;
  // Nobody links to a row that was never there; it has been there when it was read.
  if (code == SQLITE_CONSTRAINT_FOREIGNKEY)
    return {Kind::conflict,
            fmt::format("something in {} was removed by another program while a link to it was made; try again", name)};
  switch (code & 0xff) {
    case SQLITE_FULL:
      return {Kind::diskFull, fmt::format("the disk is full: cannot write {}; make room on it and try again", name)};
    case SQLITE_NOTADB:
      return {Kind::notAStore,
              fmt::format("{} is not a Habitra store; move it away, or choose another home with HABITRA_HOME", name)};
    case SQLITE_CORRUPT:
      return {Kind::damaged, fmt::format("{} is damaged: {}; restore a backup of it", name, sqlite3_errmsg(handle))};
    case SQLITE_READONLY:
      return {Kind::readOnly,
              fmt::format("{} can be read but not written; give yourself the right to write it and its folder", name)};
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return {Kind::busy, fmt::format("{} is in use by another program; end it and try again", name)};
    case SQLITE_IOERR:
      return {Kind::failed, fmt::format("cannot read or write {}: {}; check the disk", name, systemMessage(handle))};
    case SQLITE_CANTOPEN:
      return {Kind::failed, fmt::format("cannot open {}: {}; give yourself the right to it and its folder", name,
                                        systemMessage(handle))};
    case SQLITE_NOMEM:
      return {Kind::failed, fmt::format("out of memory with {}; end some other programs and try again", name)};
    default:
      return {Kind::failed, fmt::format("the store {} refuses a step: {}; restore a backup of it if this goes on", name,
                                        sqlite3_errmsg(handle))};
  }
}

}  // namespace

Statement::Statement(Connection& connection, std::string_view sql) : connection_(&connection) {
  const int code = sqlite3_prepare_v3(connection.handle(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &handle_, nullptr);
  if (code != SQLITE_OK) connection.fail(code);
}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_), handle_(std::exchange(other.handle_, nullptr)) {}

Statement::~Statement() { sqlite3_finalize(handle_); }

void Statement::bind(int parameter, std::int64_t value) {
  if (const int code = sqlite3_bind_int64(handle_, parameter, value); code != SQLITE_OK) connection_->fail(code);
}

void Statement::bind(int parameter, double value) {
  if (const int code = sqlite3_bind_double(handle_, parameter, value); code != SQLITE_OK) connection_->fail(code);
}

void Statement::bind(int parameter, std::string_view text) {
  const int code = sqlite3_bind_text64(handle_, parameter, text.data() == nullptr ? "" : text.data(), text.size(),
                                       SQLITE_STATIC, SQLITE_UTF8);
  if (code != SQLITE_OK) connection_->fail(code);
}

void Statement::bind(int parameter, std::span<const std::uint8_t> bytes) {
  const void* data = bytes.empty() ? static_cast<const void*>("") : bytes.data();
  const int code = sqlite3_bind_blob64(handle_, parameter, data, bytes.size(), SQLITE_STATIC);
  if (code != SQLITE_OK) connection_->fail(code);
}

void Statement::bindNull(int parameter) {
  if (const int code = sqlite3_bind_null(handle_, parameter); code != SQLITE_OK) connection_->fail(code);
}

bool Statement::step() {
  const int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  connection_->fail(code);
}

void Statement::reset() noexcept { sqlite3_reset(handle_); }

Column Statement::column(int column) const { return Column(sqlite3_column_value(handle_, column)); }

// The engine calls such a value unprotected: only its connection's own thread may look at it, and only that does.
Column::Column(sqlite3_value* value) : value_(value), type_(sqlite3_value_type(value)) {}

bool Column::isNull() const { return type_ == SQLITE_NULL; }
bool Column::isInteger() const { return type_ == SQLITE_INTEGER; }
bool Column::isReal() const { return type_ == SQLITE_FLOAT; }
bool Column::isText() const { return type_ == SQLITE_TEXT; }
bool Column::isBytes() const { return type_ == SQLITE_BLOB; }
std::int64_t Column::integer() const { return sqlite3_value_int64(value_); }
double Column::real() const { return sqlite3_value_double(value_); }

std::string_view Column::text() const {
  const auto* data = reinterpret_cast<const char*>(sqlite3_value_text(value_));
  if (data == nullptr) return {};
  return {data, static_cast<std::size_t>(sqlite3_value_bytes(value_))};
}

Bytes Column::bytes() const {
  const auto* data = static_cast<const std::uint8_t*>(sqlite3_value_blob(value_));
  if (data == nullptr) return {};
  return {data, data + sqlite3_value_bytes(value_)};
}

Query::Use::Use(Query& query) : query_(query) {
  if (query.idle_.empty()) {
    statement_ = std::make_unique<Statement>(query.connection_, query.sql_);
  } else {
    statement_ = std::move(query.idle_.back());
    query.idle_.pop_back();
  }
}

Query::Use::~Use() {
  statement_->reset();
  query_.idle_.push_back(std::move(statement_));
}

Connection::Connection(const std::string& address, std::filesystem::path file, Access access) : file_(std::move(file)) {
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW;
  flags |= access == Access::readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (access == Access::memory) flags |= SQLITE_OPEN_CREATE;
  if (address.starts_with("file:")) flags |= SQLITE_OPEN_URI;
  const int code = sqlite3_open_v2(address.c_str(), &handle_, flags, nullptr);
  try {
    if (code != SQLITE_OK) fail(code);
    configure(access);
    // Before the first look at the store; after that the index would be looked for beside it.
    if (address.ends_with(StoreFile::withoutLocks)) execute("PRAGMA locking_mode=EXCLUSIVE");
  } catch (...) {
    sqlite3_close_v2(handle_);
    throw;
  }
}

Connection::~Connection() { sqlite3_close_v2(handle_); }

void Connection::configure(Access access) {
  sqlite3_busy_timeout(handle_, busyMilliseconds);
  const auto set = [this](int option, int value) {
    if (const int code = sqlite3_db_config(handle_, option, value, nullptr); code != SQLITE_OK) fail(code);
  };
  set(SQLITE_DBCONFIG_ENABLE_FKEY, 1);
  set(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0);
  set(SQLITE_DBCONFIG_DEFENSIVE, 1);
  set(SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1);
  // A hook of our own stands where the automatic checkpoint would.
  sqlite3_wal_hook(
      handle_,
      [](void* self, sqlite3*, const char*, int pages) {
        static_cast<Connection*>(self)->pagesInLog_ = pages;
        return SQLITE_OK;
      },
      this);
  sqlite3_int64 noMap = 0;
  sqlite3_file_control(handle_, nullptr, SQLITE_FCNTL_MMAP_SIZE, &noMap);
  if (access == Access::readWrite)
    execute(fmt::format("PRAGMA synchronous=FULL; PRAGMA journal_size_limit={}", mostPagesLeft * bytesOfPage).c_str());
}

void Connection::execute(const char* sql) {
  if (const int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr); code != SQLITE_OK) fail(code);
}

std::int64_t Connection::integer(const char* sql) {
  Statement statement(*this, sql);
  return statement.step() ? statement.integer(0) : 0;
}

bool Connection::isInTransaction() const { return sqlite3_get_autocommit(handle_) == 0; }

void Connection::rollback() noexcept {
  if (isInTransaction()) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Connection::executeAtomically(const std::string& sql) {
  try {
    execute(("BEGIN IMMEDIATE;\n" + sql + "COMMIT").c_str());
  } catch (...) {
    rollback();
    throw;
  }
}

int Connection::changes() const { return sqlite3_changes(handle_); }

void Connection::shortenLog() noexcept {
  if (pagesInLog_ > longLogPages && !checkpoint())
    qz::log::warning("Could not shorten the write-ahead log of {}", file_.string());
}

bool Connection::checkpoint() noexcept {
  // Whoever opens the store first reads the whole log, so a long one is not left for the next writer to start over.
  const int mode = pagesInLog_ > mostPagesLeft ? SQLITE_CHECKPOINT_TRUNCATE : SQLITE_CHECKPOINT_PASSIVE;
  // Readers are not waited for; what they still need stays for the next time.
  sqlite3_busy_timeout(handle_, 0);
  const int code = sqlite3_wal_checkpoint_v2(handle_, nullptr, mode, nullptr, nullptr) & 0xff;
  sqlite3_busy_timeout(handle_, busyMilliseconds);
  return code == SQLITE_OK || code == SQLITE_BUSY;
}

void Connection::fail(int code) const {
  if (file_.empty() && (code & 0xff) == SQLITE_BUSY)
    throw StoreError(StoreError::Kind::busy,
                     "the store in memory is in use by another context of this program; save or roll back there and "
                     "try again");
  throw errorFor(code, handle_, file_.empty() ? std::string("the store in memory") : file_.string());
}

}  // namespace habitra
