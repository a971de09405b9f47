#include <HabitraCore/TaskFrequencyValidation.h>
#include <HabitraModel/Settings/Settings.h>
#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>

namespace habitra {
namespace {

template <typename T>
std::int64_t encodeRawValue(const T& value) {
  return value.rawValue();
}

template <typename T>
std::optional<T> decodeRawValue(const std::int64_t& kept) {
  return T::fromRawValue(kept);
}

template <typename T>
T itself(const T& value) {
  return value;
}

Bytes encodeFrequency(const TaskFrequency& frequency) {
  const std::string text = nlohmann::json(frequency).dump();
  return Bytes(text.begin(), text.end());
}

std::optional<TaskFrequency> decodeFrequency(const Bytes& kept) {
  try {
    const auto frequency = nlohmann::json::parse(kept).get<TaskFrequency>();
    return problems(frequency).empty() ? std::optional(frequency) : std::nullopt;
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  } catch (const qz::DecodingError&) {
    return std::nullopt;
  }
}

}  // namespace

namespace settings {

constinit const Setting<qz::DayOfWeek, std::int64_t> firstDayOfWeek{
    .key = "firstDayOfWeek",
    .place = SettingPlace::store,
    .defaultValue = &qz::DayOfWeek::defaultFirst,
    .encode = &encodeRawValue<qz::DayOfWeek>,
    .decode = &decodeRawValue<qz::DayOfWeek>,
};

constinit const Setting<qz::HHMMSS, std::int64_t> startOfDay{
    .key = "startOfDay",
    .place = SettingPlace::store,
    .defaultValue = [] { return qz::HHMMSS::midnight; },
    .encode = &encodeRawValue<qz::HHMMSS>,
    .decode = &decodeRawValue<qz::HHMMSS>,
};

constinit const Setting<TaskFrequency, Bytes> defaultFrequency{
    .key = "defaultFrequency",
    .place = SettingPlace::store,
    .defaultValue = &TaskFrequency::everyDay,
    .encode = &encodeFrequency,
    .decode = &decodeFrequency,
};

constinit const Setting<bool, bool> cloudSync{
    .key = "dm.cloudSync",
    .place = SettingPlace::sharedDefaults,
    .defaultValue = [] { return false; },
    .encode = &itself<bool>,
    .decode = [](const bool& kept) { return std::optional(kept); },
};

bool isReadable(const SettingEntity& row) {
  const auto isReadableAs = [&row]<typename T, typename Kind>(const Setting<T, Kind>& setting) {
    const auto& kept = row.*StoreSettings::column<Kind>();
    return row.settingKey == setting.key && kept && setting.decode(*kept);
  };
  return isReadableAs(firstDayOfWeek) || isReadableAs(startOfDay) || isReadableAs(defaultFrequency);
}

std::string pausesOf(std::string_view taskId) { return "task.pauses." + std::string(taskId); }

}  // namespace settings
}  // namespace habitra
