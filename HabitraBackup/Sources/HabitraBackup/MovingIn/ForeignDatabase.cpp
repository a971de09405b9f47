#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/MovingIn/ForeignDatabase.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <sqlite3.h>
#include <array>
#include <utility>

namespace habitra {

namespace {

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

/// The address under which SQLite opens a file and never writes: percent-encoded but for what paths are made of.
std::string addressOf(const std::filesystem::path& file) {
  constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-";
  std::string address = "file:";
  for (const char c : std::filesystem::absolute(file).string()) {
    if (plain.find(c) != std::string_view::npos) {
      address += c;
    } else {
      address += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return address + "?mode=ro&immutable=1";
}

/// As a name in a query.
std::string quotedName(std::string_view name) {
  std::string text = "\"";
  for (const char c : name) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  return text + "\"";
}

}  // namespace

std::optional<std::int64_t> ForeignDatabase::Row::integer(int column) const {
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_NULL) return std::nullopt;
  if (type != SQLITE_INTEGER) refuse(column, "a whole number");
  return sqlite3_column_int64(statement_, column);
}

std::optional<double> ForeignDatabase::Row::number(int column) const {
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_NULL) return std::nullopt;
  const double value = sqlite3_column_double(statement_, column);
  const bool isNumber = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  if (!isNumber || !(value - value == 0.0)) refuse(column, "a finite number");
  return value;
}

std::optional<std::string> ForeignDatabase::Row::text(int column) const {
  const int type = sqlite3_column_type(statement_, column);
  if (type == SQLITE_NULL) return std::nullopt;
  if (type != SQLITE_TEXT) refuse(column, "a text");
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  std::string text(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  if (qz::utf8::firstInvalidByte(text) || text.find('\0') != std::string::npos) refuse(column, "a text in UTF-8");
  return text;
}

std::int64_t ForeignDatabase::Row::wantedInteger(int column) const {
  const auto value = integer(column);
  if (!value) refuse(column, "a whole number");
  return *value;
}

void ForeignDatabase::Row::refuse(int column, std::string_view wanted) const {
  std::string value = "nothing";
  if (sqlite3_column_type(statement_, column) != SQLITE_NULL) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    value = qz::utf8::quoted(bytes == nullptr ? std::string_view() : std::string_view(bytes, length));
  }
  // The key of the row is always the first column that is asked for.
  database_.fail(fmt::format("{}, row {}, {}: {} found, {} expected", table_, sqlite3_column_int64(statement_, 0),
                             sqlite3_column_name(statement_, column), value, wanted));
}

ForeignDatabase::ForeignDatabase(const std::filesystem::path& file)
    : name_(shownPath(file)), connection_(nullptr, &sqlite3_close_v2) {
  const std::filesystem::path waiting = file.string() + "-wal";
  std::error_code ignored;
  if (const auto size = std::filesystem::file_size(waiting, ignored); !ignored && size > 0) {
    fail(fmt::format("changes stand in {} that are not written back yet; close the program that uses the database",
                     shownPath(waiting)));
  }
  sqlite3* connection = nullptr;
  const int result = sqlite3_open_v2(addressOf(file).c_str(), &connection,
                                     SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  if (result != SQLITE_OK) fail(fmt::format("the database cannot be opened ({})", sqlite3_errstr(result)));
  harden();
  check();
}

ForeignDatabase::~ForeignDatabase() = default;

void ForeignDatabase::harden() const {
  sqlite3* const db = connection_.get();
  constexpr std::array<std::pair<int, int>, 5> switches{{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                         {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0}}};
  for (const auto& [option, value] : switches) sqlite3_db_config(db, option, value, nullptr);
  sqlite3_limit(db, SQLITE_LIMIT_LENGTH, 1 << 24);
  sqlite3_limit(db, SQLITE_LIMIT_SQL_LENGTH, 1 << 16);
  sqlite3_limit(db, SQLITE_LIMIT_COLUMN, 200);
  sqlite3_limit(db, SQLITE_LIMIT_EXPR_DEPTH, 20);
  sqlite3_limit(db, SQLITE_LIMIT_COMPOUND_SELECT, 3);
  sqlite3_limit(db, SQLITE_LIMIT_ATTACHED, 0);
  sqlite3_limit(db, SQLITE_LIMIT_WORKER_THREADS, 0);
}

void ForeignDatabase::check() const {
  run("PRAGMA quick_check(1)", "quick_check", [this](const Row& row) {
    const std::string answer = row.text(0).value_or(std::string());
    if (answer != "ok") fail("the database is damaged (" + qz::utf8::printable(answer, 200) + ")");
  });
}

void ForeignDatabase::fail(std::string_view problem) const { throw qz::Error(name_ + ": " + std::string(problem)); }

void ForeignDatabase::run(const std::string& query, std::string_view table,
                          const std::function<void(const Row&)>& onRow) const {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(connection_.get(), query.c_str(), -1, &prepared, nullptr);
  const Statement statement(prepared, &sqlite3_finalize);
  const auto failed = [this] {
    fail("the database is damaged (" + qz::utf8::printable(sqlite3_errmsg(connection_.get()), 200) + ")");
  };
  if (result != SQLITE_OK) failed();
  for (std::size_t count = 1;; ++count) {
    const int step = sqlite3_step(statement.get());
    if (step == SQLITE_DONE) return;
    if (step != SQLITE_ROW) failed();
    if (count > foreign_limits::mostRows) {
      fail(fmt::format("more than {} rows found in {}, fewer were expected", foreign_limits::mostRows, table));
    }
    onRow(Row(*this, table, statement.get()));
  }
}

std::int64_t ForeignDatabase::version() const {
  std::int64_t version = 0;
  run("PRAGMA user_version", "user_version", [&version](const Row& row) { version = row.wantedInteger(0); });
  return version;
}

void ForeignDatabase::wantVersion(std::int64_t oldest, std::int64_t newest) const {
  const std::int64_t its = version();
  if (its >= oldest && its <= newest) return;
  fail(fmt::format("layout {} of the database found, {} to {} expected", its, oldest, newest));
}

bool ForeignDatabase::holds(const std::string& query, std::string_view first, std::string_view second) const {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(connection_.get(), query.c_str(), -1, &prepared, nullptr);
  const Statement statement(prepared, &sqlite3_finalize);
  if (result != SQLITE_OK) fail("the database is damaged");
  sqlite3_bind_text(prepared, 1, first.data(), static_cast<int>(first.size()), SQLITE_STATIC);
  if (!second.empty()) {
    sqlite3_bind_text(prepared, 2, second.data(), static_cast<int>(second.size()), SQLITE_STATIC);
  }
  const int step = sqlite3_step(prepared);
  if (step != SQLITE_ROW && step != SQLITE_DONE) fail("the database is damaged");
  return step == SQLITE_ROW;
}

bool ForeignDatabase::hasTable(std::string_view table) const {
  // A virtual table has no root page; what it would read or run nobody knows.
  return holds("SELECT 1 FROM sqlite_master WHERE type = 'table' AND rootpage > 0 AND name = ?1 COLLATE NOCASE", table,
               {});
}

bool ForeignDatabase::hasColumn(std::string_view table, std::string_view column) const {
  return holds("SELECT 1 FROM pragma_table_info(?1) WHERE name = ?2 COLLATE NOCASE", table, column);
}

std::int64_t ForeignDatabase::numRows(std::string_view table) const {
  std::int64_t count = 0;
  run("SELECT count(*) FROM " + quotedName(table), table, [&count](const Row& row) { count = row.wantedInteger(0); });
  return count;
}

void ForeignDatabase::forEachRow(std::string_view table, std::initializer_list<std::string_view> columns,
                                 const std::function<void(const Row&)>& onRow, const ExchangeProgress& progress) const {
  std::string list;
  for (const std::string_view column : columns) {
    if (!list.empty()) list += ", ";
    list += (hasColumn(table, column) ? quotedName(column) : std::string("NULL")) + " AS " + quotedName(column);
  }
  const std::string query = "SELECT " + list + " FROM " + quotedName(table) + " ORDER BY 1";
  if (!progress) return run(query, table, onRow);
  const auto all = static_cast<double>(numRows(table));
  run(query, table, [&, read = 0.0](const Row& row) mutable {
    onRow(row);
    progress("reading", ++read / all);
  });
}

}  // namespace habitra
