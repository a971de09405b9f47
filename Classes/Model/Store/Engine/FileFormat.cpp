#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/FileFormat.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>

namespace habitra {

FileFormat::Found FileFormat::find(Connection& connection) const {
  const std::int64_t owner = connection.integer("PRAGMA application_id");
  const std::int64_t found = connection.integer("PRAGMA user_version");
  const std::string name = connection.file().string();
  if (owner == applicationID && found > version)
    throw StoreError(
        StoreError::Kind::newerVersion,
        fmt::format("{} was made by a newer version of Habitra; bring Habitra up to date to open it", name));
  if (owner == applicationID && found > 0) return found < version ? Found::older : Found::current;
  if (owner != 0 || found != 0 || connection.integer("SELECT count(*) FROM sqlite_schema") != 0)
    throw StoreError(
        StoreError::Kind::notAStore,
        fmt::format("{} is not a Habitra store; move it away, or choose another home with HABITRA_HOME", name));
  return Found::nothing;
}

}  // namespace habitra
