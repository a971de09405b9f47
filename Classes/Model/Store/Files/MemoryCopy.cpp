#include <HabitraModel/Store/Files/MemoryCopy.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>
#include <sqlite3.h>

#include <cstddef>

namespace habitra {

namespace {

/// The file format's version for writing and for reading: 2 has a write-ahead log, which memory cannot have.
constexpr std::size_t writeVersionOffset = 18;
constexpr std::size_t readVersionOffset = 19;

/// A connection to a memory of its own with what `source` sees.
std::unique_ptr<Connection> privateCopy(Connection& source) {
  sqlite3_int64 size = 0;
  unsigned char* content = sqlite3_serialize(source.handle(), "main", &size, 0);
  if (content == nullptr || size < 100) {
    sqlite3_free(content);
    throw StoreError(
        StoreError::Kind::failed,
        fmt::format("cannot read {} into memory; end some other programs and try again", source.file().string()));
  }
  content[writeVersionOffset] = content[readVersionOffset] = 1;
  auto copy = std::make_unique<Connection>(":memory:", source.file(), Connection::Access::memory);
  // Takes the content over, also when it fails.
  const int code = sqlite3_deserialize(copy->handle(), "main", content, size, size, SQLITE_DESERIALIZE_FREEONCLOSE);
  if (code != SQLITE_OK) copy->fail(code);
  return copy;
}

}  // namespace

std::unique_ptr<Connection> copyIntoMemory(Connection& source, const std::string& address) {
  const std::unique_ptr<Connection> content = privateCopy(source);
  auto shared = std::make_unique<Connection>(address, source.file(), Connection::Access::memory);
  sqlite3_backup* backup = sqlite3_backup_init(shared->handle(), "main", content->handle(), "main");
  if (backup == nullptr) shared->fail(sqlite3_errcode(shared->handle()));
  sqlite3_backup_step(backup, -1);
  if (const int code = sqlite3_backup_finish(backup); code != SQLITE_OK) shared->fail(code);
  return shared;
}

}  // namespace habitra
