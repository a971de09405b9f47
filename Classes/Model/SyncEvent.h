#pragma once

#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <string>

namespace habitra {

/// A step of the mirroring of a store, as whoever mirrors it reports it: once when it begins, and once more, under the
/// same identifier, when it has ended.
struct SyncEvent {
  enum class Type {
    setup,      ///< the mirroring is prepared
    importing,  ///< changes come in
    exporting,  ///< changes go out
  };

  qz::UniqueID identifier;
  Type type = Type::setup;
  qz::Moment startDate;
  std::optional<qz::Moment> endDate;  ///< none while it is under way
  std::optional<std::string> error;   ///< why it failed; none while it is under way and when it succeeded

  friend bool operator==(const SyncEvent&, const SyncEvent&) = default;
};

}  // namespace habitra
