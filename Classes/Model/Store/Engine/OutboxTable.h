#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Outbox.h>

#include <vector>

namespace habitra {

/// What others have still to be told of.
class OutboxTable {
 public:
  explicit OutboxTable(Connection& connection);

  void put(OutboxLink link, ObjectID task, qz::Moment due);
  [[nodiscard]] std::vector<OutboxItem> read(OutboxLink link);
  /// Does nothing when it was put there again meanwhile, or is not there any more.
  void remove(OutboxLink link, const OutboxItem& item);

 private:
  Query put_;
  Query read_;
  Query remove_;
};

}  // namespace habitra
