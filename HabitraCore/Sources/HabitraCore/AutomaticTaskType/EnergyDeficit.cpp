#include <HabitraCore/AutomaticTaskType/EnergyDeficit.h>

namespace habitra {

bool AutomaticTaskTypeEnergyDeficitProcessor::qualifies(Direction direction, double target,
                                                        const EnergyDeficit& deficit, bool zeroesAllowed) {
  if (!zeroesAllowed && (deficit.totalInput() == 0 || deficit.totalOutput() == 0)) return false;
  return direction == Direction::greaterThan ? deficit.total() >= target : deficit.total() <= target;
}

}  // namespace habitra
