#include <QZDateTime/DayNumber.h>
#include <QZKit/Checked.h>

namespace qz::day_number {

std::int64_t ofAny(std::int64_t y, std::int64_t m, std::int64_t d) {
  const std::int64_t month = checkedSubtract<std::int64_t>(m, 1);
  const std::int64_t year = checkedAdd(y, floorDivide(month, 12));
  // Whole eras are split off, so that what is left takes the near road; counted from 1970 and towards zero, so that
  // neither part is further from zero than the result.
  const std::int64_t sinceEpoch = checkedSubtract<std::int64_t>(year, 1970);
  std::int64_t era = floorDivide(sinceEpoch, 400);
  std::int64_t first = ofNear(1970 + floorRemainder(sinceEpoch, 400), floorRemainder(month, 12) + 1, 1);
  if (era < 0) {
    ++era;
    first -= daysPerEra;
  }
  const std::int64_t rest = checkedAdd(first, checkedSubtract<std::int64_t>(d, 1));
  return checkedAdd(checkedMultiply(era, daysPerEra), rest);
}

Civil anyCivil(std::int64_t number) {
  Civil civil = nearCivil(floorRemainder(number, daysPerEra));
  civil.y = checkedAdd(civil.y, checkedMultiply<std::int64_t>(floorDivide(number, daysPerEra), 400));
  return civil;
}

}  // namespace qz::day_number
