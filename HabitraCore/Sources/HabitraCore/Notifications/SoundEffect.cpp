#include <HabitraCore/Notifications/SoundEffect.h>

#include <cstddef>

namespace habitra {

namespace {

struct SlotSound {
  SoundType slot;
  SoundEffect sound;
};

/// In the order of declaration of SoundType. Progress sounds lighter than success, and a miss is never a fanfare.
constexpr std::array<SlotSound, 6> slotSounds{{
    {SoundType::taskComplete, SoundEffect::chime},
    {SoundType::taskPartiallyComplete, SoundEffect::waterDrop},
    {SoundType::taskMissed, SoundEffect::knock},
    {SoundType::taskPartiallyMissed, SoundEffect::silent},
    {SoundType::reminder, SoundEffect::bell},
    {SoundType::timerNotification, SoundEffect::gong},
}};

}  // namespace

SoundEffect defaultSound(SoundType slot) { return slotSounds[static_cast<std::size_t>(slot)].sound; }

}  // namespace habitra
