#include <HabitraModel/Store/Engine/OutboxTable.h>

#include <chrono>

namespace habitra {

OutboxTable::OutboxTable(Connection& connection)
    : put_(connection,
           "INSERT INTO habitra_outbox VALUES (?, ?, ?, 1) ON CONFLICT DO UPDATE SET due=min(due, excluded.due), "
           "revision=revision+1"),
      read_(connection, "SELECT task, due, revision FROM habitra_outbox WHERE link=? ORDER BY due, task"),
      remove_(connection, "DELETE FROM habitra_outbox WHERE link=? AND task=? AND revision=?") {}

void OutboxTable::put(OutboxLink link, ObjectID task, qz::Moment due) {
  auto statement = put_.use();
  statement->bind(1, rawValue(link));
  statement->bind(2, rawValue(task));
  statement->bind(3, std::int64_t{due.time_since_epoch().count()});
  statement->step();
}

std::vector<OutboxItem> OutboxTable::read(OutboxLink link) {
  auto statement = read_.use();
  statement->bind(1, rawValue(link));
  std::vector<OutboxItem> items;
  while (statement->step())
    items.push_back({.task = ObjectID{statement->integer(0)},
                     .due = qz::Moment(std::chrono::microseconds(statement->integer(1))),
                     .revision = statement->integer(2)});
  return items;
}

void OutboxTable::remove(OutboxLink link, const OutboxItem& item) {
  auto statement = remove_.use();
  statement->bind(1, rawValue(link));
  statement->bind(2, rawValue(item.task));
  statement->bind(3, item.revision);
  statement->step();
}

}  // namespace habitra
