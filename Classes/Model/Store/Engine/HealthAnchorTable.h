#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/ObjectID.h>

#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// How far each task has taken health data into account, as a text that whoever wrote it understands.
class HealthAnchorTable {
 public:
  explicit HealthAnchorTable(Connection& connection);

  [[nodiscard]] std::optional<std::string> read(ObjectID task);
  void write(ObjectID task, std::string_view anchor);
  void remove(ObjectID task);

 private:
  Query read_;
  Query write_;
  Query remove_;
};

}  // namespace habitra
