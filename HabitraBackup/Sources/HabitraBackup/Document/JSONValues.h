#pragma once

#include <HabitraBackup/Document/JSONStream.h>
#include <HabitraModel/Store/StoredValues.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

/// What the values of a JSON text are read as. Each throws HabitraJSONError, which says where, what was found and what
/// was expected, for anything else.
namespace habitra {

/// A value and where it stands: at `place`, or there under the key `member`.
struct JSONFound {
  const nlohmann::json& json;
  const JSONPlace& place;
  std::string_view member = {};

  /// Refuses it: "tasks[0].title: 3 is not a text".
  [[noreturn]] void refuse(std::string_view expected) const;

  [[nodiscard]] bool truth() const;
  [[nodiscard]] std::int64_t wholeNumber(std::int64_t least, std::int64_t most) const;
  [[nodiscard]] double number() const;
  [[nodiscard]] const std::string& text() const;
  [[nodiscard]] Bytes bytes() const;
  [[nodiscard]] qz::Moment moment() const;
  [[nodiscard]] qz::YYYYMMDD day() const;
  [[nodiscard]] qz::UniqueID identifier() const;
  /// Itself, when it is an object.
  [[nodiscard]] const nlohmann::json& object() const;
};

}  // namespace habitra
