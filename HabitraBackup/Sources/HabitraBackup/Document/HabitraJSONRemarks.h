#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace habitra {

/// What of a backup document was read over, so that nothing is lost unnoticed.
struct HabitraJSONRemarks {
  static constexpr std::size_t mostNames = 100;

  /// The keys that this version does not know, as "tasks[].taskEntry[].mood", and how often each was there. Those that
  /// come after `mostNames` others are counted together, under "...".
  std::map<std::string, std::size_t> unknownKeys;

  void addUnknownKey(const std::string& name) {
    const bool isNamed = unknownKeys.size() < mostNames || unknownKeys.contains(name);
    ++unknownKeys[isNamed ? name : "..."];
  }

  friend bool operator==(const HabitraJSONRemarks&, const HabitraJSONRemarks&) = default;
};

}  // namespace habitra
