#include <HabitraBackup/Document/HabitraJSONBackupVisualRepresentation.h>

#include <utility>

namespace habitra {

namespace {

using Representation = HabitraJSONBackupVisualRepresentation;

constexpr std::size_t prefixLength = 3;

constexpr std::string_view prefix(Representation::Kind kind) {
  return kind == Representation::Kind::icon ? "ic_" : "sf_";
}

}  // namespace

Representation::HabitraJSONBackupVisualRepresentation(Kind kind, std::string name)
    : kind_(kind), name_(std::move(name)) {}

Representation Representation::icon(std::string name) { return {Kind::icon, std::move(name)}; }
Representation Representation::sfSymbol(std::string name) { return {Kind::sfSymbol, std::move(name)}; }

std::optional<Representation> Representation::fromText(std::string_view text) {
  if (text.size() <= prefixLength) return std::nullopt;
  for (const Kind kind : {Kind::icon, Kind::sfSymbol}) {
    if (text.starts_with(prefix(kind))) return Representation(kind, std::string(text.substr(prefixLength)));
  }
  return std::nullopt;
}

std::string Representation::text() const { return std::string(prefix(kind_)) + name_; }

}  // namespace habitra
