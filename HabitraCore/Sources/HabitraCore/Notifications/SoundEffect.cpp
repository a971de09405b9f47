#include <HabitraCore/Notifications/SoundEffect.h>
#include <QZKit/OrderedRows.h>

#include <cstddef>

namespace habitra {

namespace {

struct SoundTitle {
  SoundEffect sound;
  std::string_view title;
};

constexpr std::array<SoundTitle, RawValueTable<SoundEffect>::rows.size()> soundTitles{{
    {SoundEffect::silent, "Silent"},
    {SoundEffect::chime, "Chime"},
    {SoundEffect::bell, "Bell"},
    {SoundEffect::softBell, "Soft bell"},
    {SoundEffect::gong, "Gong"},
    {SoundEffect::singingBowl, "Singing bowl"},
    {SoundEffect::waterDrop, "Water drop"},
    {SoundEffect::marimba, "Marimba"},
    {SoundEffect::fanfare, "Fanfare"},
    {SoundEffect::knock, "Knock"},
}};
static_assert(qz::standInOrder(soundTitles, &SoundTitle::sound), "a sound's place is its number");

struct SlotSound {
  SoundType slot;
  SoundEffect sound;
};

/// Progress sounds lighter than success, and a miss is never a fanfare.
constexpr std::array<SlotSound, RawValueTable<SoundType>::rows.size()> slotSounds{{
    {SoundType::taskComplete, SoundEffect::chime},
    {SoundType::taskPartiallyComplete, SoundEffect::waterDrop},
    {SoundType::taskMissed, SoundEffect::knock},
    {SoundType::taskPartiallyMissed, SoundEffect::silent},
    {SoundType::reminder, SoundEffect::bell},
    {SoundType::timerNotification, SoundEffect::gong},
}};
static_assert(qz::standInOrder(slotSounds, &SlotSound::slot), "a slot's place is its number");

}  // namespace

std::string_view title(SoundEffect sound) { return soundTitles[static_cast<std::size_t>(sound)].title; }

SoundEffect defaultSound(SoundType slot) { return slotSounds[static_cast<std::size_t>(slot)].sound; }

}  // namespace habitra
