#include <HabitraModel/Store/Engine/HealthAnchorTable.h>

namespace habitra {

HealthAnchorTable::HealthAnchorTable(Connection& connection)
    : read_(connection, "SELECT anchor FROM habitra_health_anchor WHERE task=?"),
      write_(connection,
             "INSERT INTO habitra_health_anchor VALUES (?, ?) ON CONFLICT DO UPDATE SET anchor=excluded.anchor"),
      remove_(connection, "DELETE FROM habitra_health_anchor WHERE task=?") {}

std::optional<std::string> HealthAnchorTable::read(ObjectID task) {
  auto statement = read_.use();
  statement->bind(1, rawValue(task));
  return statement->step() ? std::optional(std::string(statement->text(0))) : std::nullopt;
}

void HealthAnchorTable::write(ObjectID task, std::string_view anchor) {
  auto statement = write_.use();
  statement->bind(1, rawValue(task));
  statement->bind(2, anchor);
  statement->step();
}

void HealthAnchorTable::remove(ObjectID task) {
  auto statement = remove_.use();
  statement->bind(1, rawValue(task));
  statement->step();
}

}  // namespace habitra
