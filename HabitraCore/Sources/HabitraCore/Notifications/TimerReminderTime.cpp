#include <HabitraCore/Notifications/RecordFields.h>
#include <HabitraCore/Notifications/TimerReminderTime.h>
#include <QZDateTime/ISO8601.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TimerReminderTime& time) {
  json = {{"type", rawValue(time.type)}, {"duration", time.duration}, {"date", qz::iso8601(time.date)}};
}

void from_json(const nlohmann::json& json, TimerReminderTime& time) {
  time.type = decodeMember<TimerReminderType>(json, "type");
  time.duration = decodeMember<double>(json, "duration");
  const auto date = qz::momentFromISO8601(decodeMember<std::string>(json, "date"));
  // With an offset, a text of the first or the last day can name a moment outside of the years that are written.
  if (!date || *date < TimerReminderTime::firstDate || *date >= TimerReminderTime::endOfDates)
    refuseMember("date", json["date"]);
  time.date = *date;
}

}  // namespace habitra
