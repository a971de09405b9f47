#include <QZDateTime/TimeZone.h>
#include <QZDateTime/ZoneRules.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace qz {
namespace {

constexpr std::string_view utcIdentifier = "UTC";

/// Whether the text can name a zone: parts of letters, digits and a few signs, joined by "/".
bool isIdentifier(std::string_view text) {
  constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_+-/";
  constexpr std::size_t longest = 64;  // the database's own are at most 32 long
  if (text.empty() || text.size() > longest || text.front() == '/' || text.back() == '/') return false;
  if (text.find_first_not_of(allowed) != std::string_view::npos) return false;
  // Files beside the zones, and copies of all zones that count otherwise.
  return text != "localtime" && text != "posixrules" && !text.starts_with("posix/") && !text.starts_with("right/");
}

/// The zone that a path into the zone files stands for ("../usr/share/zoneinfo/Asia/Tokyo"), or a plain name.
std::optional<TimeZone> fromPathOrIdentifier(std::string_view text) {
  constexpr std::string_view folder = "/zoneinfo/";
  if (const std::size_t place = text.rfind(folder); place != std::string_view::npos)
    text.remove_prefix(place + folder.size());
  return TimeZone::fromIdentifier(text);
}

std::optional<TimeZone> fromEnvironment() {
  const char* variable = std::getenv("TZ");
  if (variable == nullptr) return std::nullopt;
  std::string_view text = variable;
  if (text.starts_with(':')) text.remove_prefix(1);  // POSIX: what follows is a name and no rule
  return fromPathOrIdentifier(text);
}

std::optional<TimeZone> fromSystem() {
  std::error_code error;
  const std::filesystem::path link = std::filesystem::read_symlink("/etc/localtime", error);
  if (!error) {
    if (const auto zone = fromPathOrIdentifier(link.native())) return zone;
  }
  std::string name;
  std::ifstream("/etc/timezone") >> name;
  return TimeZone::fromIdentifier(name);
}

/// All zones read so far.
struct Registry {
  std::mutex mutex;
  std::unordered_map<std::string, std::unique_ptr<const ZoneRules>> rules;
};

const ZoneRules* rulesOf(const std::string& identifier) {
  static auto* const registry = new Registry;  // never freed: zones outlive everything that holds one
  const std::scoped_lock lock(registry->mutex);
  if (const auto known = registry->rules.find(identifier); known != registry->rules.end()) return known->second.get();
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(identifier, &zone)) return nullptr;
  return registry->rules.emplace(identifier, std::make_unique<const ZoneRules>(identifier, zone)).first->second.get();
}

}  // namespace

std::optional<TimeZone> TimeZone::fromIdentifier(std::string_view identifier) {
  if (!isIdentifier(identifier)) return std::nullopt;
  const ZoneRules* rules = rulesOf(std::string(identifier));
  if (rules == nullptr) return std::nullopt;
  return TimeZone(rules);
}

TimeZone TimeZone::current() {
  if (const auto zone = fromEnvironment()) return *zone;
  if (const auto zone = fromSystem()) return *zone;
  return utc();
}

TimeZone TimeZone::utc() {
  static const ZoneRules* const rules = rulesOf(std::string(utcIdentifier));
  return TimeZone(rules);
}

const std::string& TimeZone::identifier() const { return rules_->identifier(); }

std::chrono::seconds TimeZone::offset(Moment date) const { return std::chrono::seconds(rules_->offset(date)); }

}  // namespace qz
