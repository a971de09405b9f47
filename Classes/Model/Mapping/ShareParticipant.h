#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// Somebody who takes part in a shared task.
struct ShareParticipant {
  enum class Role : std::uint8_t {
    owner,
    editor,  ///< records entries
    viewer,
  };
  enum class Acceptance : std::uint8_t {
    pending,  ///< invited, without an answer
    accepted,
    declined,
    removed,  ///< by the owner
  };

  std::string identifier;           ///< in the cloud
  std::optional<std::string> name;  ///< as they show themselves
  std::optional<Role> role;         ///< none: one that a later version has added
  std::optional<Acceptance> acceptance;

  friend bool operator==(const ShareParticipant&, const ShareParticipant&) = default;
};

/// The participants that TaskShareEntity::participantsJson lists: objects with the names of the fields as keys. What is
/// no list lists nobody; who has no identifier is left out.
[[nodiscard]] std::vector<ShareParticipant> participantsOf(const TaskShareEntity& share);

/// Writes nothing when the row lists the same participants already. What is not known of somebody who stays, stays, and
/// so do elements without an identifier. When nothing is left, the attribute is none.
void setParticipants(TaskShareEntity& share, const std::vector<ShareParticipant>& participants);

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::ShareParticipant::Role> {
  using T = habitra::ShareParticipant::Role;
  static constexpr std::array<RawValueRow<T, std::string_view>, 3> rows{{
      {T::owner, "owner", "owner"},
      {T::editor, "editor", "editor"},
      {T::viewer, "viewer", "viewer"},
  }};
};

template <>
struct qz::RawValueTable<habitra::ShareParticipant::Acceptance> {
  using T = habitra::ShareParticipant::Acceptance;
  static constexpr std::array<RawValueRow<T, std::string_view>, 4> rows{{
      {T::pending, "pending", "pending"},
      {T::accepted, "accepted", "accepted"},
      {T::declined, "declined", "declined"},
      {T::removed, "removed", "removed"},
  }};
};
