#pragma once

#include <QZKit/Error.h>

#include <string>

namespace habitra {

/// A setting as a person reads it. Values only; they do not follow later changes.
struct SettingSummary {
  std::string name;     ///< "start-of-day"
  std::string value;    ///< in the form in which it is entered: "04:00"
  bool isChosen;        ///< somebody has chosen it; false: it is the default
  std::string meaning;  ///< one sentence without full stop

  friend bool operator==(const SettingSummary&, const SettingSummary&) = default;
};

/// A name that is no setting's, or a value that a setting cannot have.
class SettingError : public qz::Error {
 public:
  using Error::Error;
};

}  // namespace habitra
