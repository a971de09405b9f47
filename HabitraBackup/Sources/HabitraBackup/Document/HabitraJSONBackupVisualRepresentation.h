#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// What a task shows beside its title: an icon of our own library or a symbol of the system, by name.
///
/// Its text form is "ic_" or "sf_" and the name. A task's image name has two more prefixes, "mg_" for a picture and
/// "em_" for an emoji, that backup documents do not carry.
class HabitraJSONBackupVisualRepresentation {
 public:
  enum class Kind : std::uint8_t { icon, sfSymbol };

  [[nodiscard]] static HabitraJSONBackupVisualRepresentation icon(std::string name);
  [[nodiscard]] static HabitraJSONBackupVisualRepresentation sfSymbol(std::string name);
  /// None for another prefix, and for a prefix without a name.
  [[nodiscard]] static std::optional<HabitraJSONBackupVisualRepresentation> fromText(std::string_view text);

  [[nodiscard]] Kind kind() const { return kind_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::string text() const;

  friend bool operator==(const HabitraJSONBackupVisualRepresentation&,
                         const HabitraJSONBackupVisualRepresentation&) = default;

 private:
  HabitraJSONBackupVisualRepresentation(Kind kind, std::string name);

  Kind kind_;
  std::string name_;
};

}  // namespace habitra
