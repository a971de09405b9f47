#include <HabitraCore/Notifications/RecordFields.h>
#include <HabitraCore/Notifications/TriggerRegion.h>

#include <concepts>
#include <type_traits>

namespace habitra {

template <typename Region, typename Visit>
requires std::same_as<std::remove_const_t<Region>, TriggerRegion>
static void visitFields(Region& region, Visit&& visit) {
  visit("type", region.type);
  visit("title", region.title);
  visit("latitude", region.latitude);
  visit("longitude", region.longitude);
  visit("radius", region.radius);
  visit("notifyOnEntry", region.notifyOnEntry);
  visit("notifyOnExit", region.notifyOnExit);
  visit("icon", region.icon);
}

std::string TriggerRegion::debugDescription() const { return describeFields(*this); }

void to_json(nlohmann::json& json, const TriggerRegion& region) { json = encodeFields(region); }

void from_json(const nlohmann::json& json, TriggerRegion& region) { decodeFields(json, region); }

}  // namespace habitra
