#include <QZDateTime/DayNumber.h>
#include <QZKit/Checked.h>

namespace qz::day_number {

std::int64_t ofAny(std::int64_t y, std::int64_t m, std::int64_t d) {
  const std::int64_t month = checkedSubtract<std::int64_t>(m, 1);
  const std::int64_t year = checkedAdd(y, floorDivide(month, 12));
  // Whole eras are split off, so that what is left takes the near road.
  const std::int64_t era = floorDivide(year, 400);
  const std::int64_t first = ofNear(floorRemainder(year, 400), floorRemainder(month, 12) + 1, 1);
  return checkedAdd(checkedAdd(checkedMultiply(era, daysPerEra), first), checkedSubtract<std::int64_t>(d, 1));
}

Civil anyCivil(std::int64_t number) {
  Civil civil = nearCivil(floorRemainder(number, daysPerEra));
  civil.y = checkedAdd(civil.y, checkedMultiply<std::int64_t>(floorDivide(number, daysPerEra), 400));
  return civil;
}

}  // namespace qz::day_number
