#pragma once

#include <iosfwd>
#include <vector>

#include "Life.h"

namespace habitra {

/// A life to be lived in one way or another.
struct Story {
  TaskRules rules;
  qz::YYYYMMDD created;
  qz::YYYYMMDD today;
  std::vector<Act> acts;  ///< in order of days
  /// The first day of which all is recorded under these rules; until then nothing is processed.
  qz::YYYYMMDD passesBegin = created;
};

/// The whole of it, for a counterexample.
std::ostream& operator<<(std::ostream& out, const Story& story);

/// Any rules, and any acts of persons and devices. All that is recorded for the period of the creation day is one full
/// entry, so that the history begins there. To be called within a property.
[[nodiscard]] Story someStory();

}  // namespace habitra
