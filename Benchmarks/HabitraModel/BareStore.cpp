#include "BareStore.h"

#include <sqlite3.h>
#include <stdexcept>

namespace habitra::benchmarks {
namespace {

void bindText(sqlite3_stmt* statement, int parameter, const std::optional<std::string>& text) {
  if (text)
    sqlite3_bind_text(statement, parameter, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
  else
    sqlite3_bind_null(statement, parameter);
}

void bindMoment(sqlite3_stmt* statement, int parameter, const std::optional<qz::Moment>& moment) {
  if (moment)
    sqlite3_bind_int64(statement, parameter, moment->time_since_epoch().count());
  else
    sqlite3_bind_null(statement, parameter);
}

std::optional<std::string> text(sqlite3_stmt* statement, int column) {
  const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  if (data == nullptr) return std::nullopt;
  return std::string(data, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

std::optional<qz::Moment> moment(sqlite3_stmt* statement, int column) {
  if (sqlite3_column_type(statement, column) == SQLITE_NULL) return std::nullopt;
  return qz::Moment(std::chrono::microseconds(sqlite3_column_int64(statement, column)));
}

constexpr int longLogPages = 256;

}  // namespace

BareStore::BareStore(const std::filesystem::path& file) {
  require(sqlite3_open_v2(file.c_str(), &handle_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK);
  execute("PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL");
  sqlite3_wal_hook(
      handle_,
      [](void* pages, sqlite3*, const char*, int count) {
        *static_cast<int*>(pages) = count;
        return SQLITE_OK;
      },
      &pagesInLog_);
}

BareStore::~BareStore() {
  for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_close(handle_);
}

void BareStore::require(bool holds) {
  if (!holds) throw std::runtime_error(sqlite3_errmsg(handle_));
}

void BareStore::execute(const char* sql) {
  require(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
}

sqlite3_stmt* BareStore::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  require(sqlite3_prepare_v3(handle_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) == SQLITE_OK);
  statements_.push_back(statement);
  return statement;
}

void BareStore::save(std::span<const TaskLogEntryEntity> entries) {
  const auto run = [this](sqlite3_stmt* statement) {
    require(sqlite3_step(statement) == SQLITE_DONE);
    sqlite3_reset(statement);
  };
  if (begin_ == nullptr) {
    begin_ = prepare("BEGIN IMMEDIATE");
    commit_ = prepare("COMMIT");
    newest_ = prepare("SELECT newestSequence, newestObjectID FROM habitra_meta");
    entry_ = prepare(
        "INSERT INTO TaskLogEntryEntity (objectID, checksum, entryDate, entryPeriodFrom, entryPeriodTo, "
        "entryPeriodType, "
        "entryType, progress, progressTotal, createdTimestamp, createdTimeZone, uniqueId, cloudStatus, "
        "cloudStatusDate, "
        "task) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)");
    change_ = prepare("INSERT INTO habitra_change VALUES (?, 3, ?, 1, 8191, ?, ?, NULL)");
    transaction_ = prepare("INSERT INTO habitra_transaction VALUES (?, 'app', 'writer', ?, 'done', NULL, NULL)");
    meta_ = prepare("UPDATE habitra_meta SET newestSequence=?, newestObjectID=?, newestMoment=?");
  }
  run(begin_);
  require(sqlite3_step(newest_) == SQLITE_ROW);
  const std::int64_t sequence = sqlite3_column_int64(newest_, 0) + 1;
  std::int64_t object = sqlite3_column_int64(newest_, 1);
  sqlite3_reset(newest_);
  for (const TaskLogEntryEntity& entry : entries) {
    ++object;
    sqlite3_bind_int64(entry_, 1, object);
    sqlite3_bind_int64(entry_, 2, 0x123456789abcdef);
    sqlite3_bind_int(entry_, 3, entry.entryDate);
    sqlite3_bind_int(entry_, 4, entry.entryPeriodFrom);
    sqlite3_bind_int(entry_, 5, entry.entryPeriodTo);
    bindText(entry_, 6, entry.entryPeriodType);
    sqlite3_bind_int(entry_, 7, entry.entryType);
    sqlite3_bind_double(entry_, 8, entry.progress);
    sqlite3_bind_double(entry_, 9, entry.progressTotal);
    bindMoment(entry_, 10, entry.createdTimestamp);
    bindText(entry_, 11, entry.createdTimeZone);
    bindText(entry_, 12, entry.uniqueId);
    bindText(entry_, 13, entry.cloudStatus);
    bindMoment(entry_, 14, entry.cloudStatusDate);
    sqlite3_bind_int64(entry_, 15, rawValue(entry.task));
    run(entry_);
    sqlite3_bind_int64(change_, 1, sequence);
    sqlite3_bind_int64(change_, 2, object);
    sqlite3_bind_int64(change_, 3, rawValue(entry.task));
    sqlite3_bind_int(change_, 4, entry.entryDate);
    run(change_);
  }
  sqlite3_bind_int64(transaction_, 1, sequence);
  sqlite3_bind_int64(transaction_, 2, 1'705'320'000'000'000);
  run(transaction_);
  sqlite3_bind_int64(meta_, 1, sequence);
  sqlite3_bind_int64(meta_, 2, object);
  sqlite3_bind_int64(meta_, 3, 1'705'320'000'000'000);
  run(meta_);
  run(commit_);
  if (pagesInLog_ > longLogPages)
    require(sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr) == SQLITE_OK);
}

std::int64_t BareStore::sumOfLog(ObjectID task) {
  if (light_ == nullptr)
    light_ = prepare(
        "SELECT objectID, entryDate, entryPeriodFrom, entryPeriodTo, entryPeriodType, entryType, progress, "
        "progressTotal FROM TaskLogEntryEntity WHERE task=? ORDER BY entryDate, objectID");
  sqlite3_bind_int64(light_, 1, rawValue(task));
  std::int64_t sum = 0;
  while (sqlite3_step(light_) == SQLITE_ROW) {
    const auto* period = reinterpret_cast<const char*>(sqlite3_column_text(light_, 4));
    sum += sqlite3_column_int64(light_, 0) + sqlite3_column_int(light_, 1) + sqlite3_column_int(light_, 2) +
           sqlite3_column_int(light_, 3) + *period + sqlite3_column_int(light_, 5) +
           static_cast<std::int64_t>(sqlite3_column_double(light_, 6) + sqlite3_column_double(light_, 7));
  }
  sqlite3_reset(light_);
  return sum;
}

std::vector<TaskLogEntryEntity> BareStore::log(ObjectID task) {
  if (whole_ == nullptr)
    whole_ = prepare(
        "SELECT objectID, checksum, entryDate, entryPeriodFrom, entryPeriodTo, entryPeriodType, entryType, progress, "
        "progressTotal, createdTimestamp, createdTimeZone, uniqueId, cloudStatus, cloudStatusDate, task "
        "FROM TaskLogEntryEntity WHERE task=? ORDER BY entryDate, objectID");
  sqlite3_bind_int64(whole_, 1, rawValue(task));
  std::vector<TaskLogEntryEntity> entries;
  while (sqlite3_step(whole_) == SQLITE_ROW) {
    TaskLogEntryEntity& entry = entries.emplace_back();
    entry.objectID = ObjectID{sqlite3_column_int64(whole_, 0)};
    entry.entryDate = sqlite3_column_int(whole_, 2);
    entry.entryPeriodFrom = sqlite3_column_int(whole_, 3);
    entry.entryPeriodTo = sqlite3_column_int(whole_, 4);
    entry.entryPeriodType = text(whole_, 5);
    entry.entryType = static_cast<std::int16_t>(sqlite3_column_int(whole_, 6));
    entry.progress = sqlite3_column_double(whole_, 7);
    entry.progressTotal = sqlite3_column_double(whole_, 8);
    entry.createdTimestamp = moment(whole_, 9);
    entry.createdTimeZone = text(whole_, 10);
    entry.uniqueId = text(whole_, 11);
    entry.cloudStatus = text(whole_, 12);
    entry.cloudStatusDate = moment(whole_, 13);
    entry.task = ObjectID{sqlite3_column_int64(whole_, 14)};
  }
  sqlite3_reset(whole_);
  return entries;
}

std::optional<std::int64_t> BareStore::setting(const std::string& key) {
  sqlite3_stmt* statement = prepare("SELECT intValue FROM SettingEntity WHERE settingKey=? ORDER BY objectID");
  sqlite3_bind_text(statement, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
  if (sqlite3_step(statement) != SQLITE_ROW) return std::nullopt;
  return sqlite3_column_int64(statement, 0);
}

}  // namespace habitra::benchmarks
