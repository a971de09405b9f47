#include <HabitraModel/Mapping/StoredDay.h>
#include <QZKit/Checked.h>

namespace habitra {

std::int32_t storedDay(const std::optional<qz::YYYYMMDD>& day) {
  return day ? qz::checkedNarrow<std::int32_t>(day->intValue()) : 0;
}

std::optional<qz::YYYYMMDD> dayFromStored(std::int64_t value) { return qz::YYYYMMDD::fromRawValue(value); }

std::optional<qz::YYYYMMDD> existingDayFromStored(std::int64_t value) {
  const auto day = dayFromStored(value);
  return day && day->exists() ? day : std::nullopt;
}

}  // namespace habitra
