#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

/// The two forms of a small, forgetful cache. Both may be used from any thread without a lock, both forget an entry
/// when another takes its slot, and both can be emptied at any time: a miss only means that the value is computed
/// again. The hash of a key picks the slot and no more; keys are compared whole.
namespace qz {

/// For keys and values of 32 bits: one slot is one atomic word that holds both, so that no reader can see one without
/// the other. Shared by all threads.
template <std::size_t slotCount>
class WordCache {
  static_assert((slotCount & (slotCount - 1)) == 0);

 public:
  /// The key that no entry may have: what an empty slot holds.
  static constexpr std::int32_t noKey = std::numeric_limits<std::int32_t>::min();

  [[nodiscard]] std::optional<std::uint32_t> find(std::int32_t key) const {
    const std::uint64_t word = slots_[indexOf(key)].load(std::memory_order_relaxed);
    if (word >> 32 != keyBits(key)) return std::nullopt;
    return static_cast<std::uint32_t>(word);
  }

  /// REQUIRES: key != noKey.
  void store(std::int32_t key, std::uint32_t value) {
    slots_[indexOf(key)].store(keyBits(key) << 32 | value, std::memory_order_relaxed);
  }

  void evict() {
    for (std::atomic<std::uint64_t>& slot : slots_) slot.store(0, std::memory_order_relaxed);
  }

 private:
  // noKey becomes 0, so that fresh slots are empty and cost no room in the program's file.
  static constexpr std::uint64_t keyBits(std::int32_t key) { return static_cast<std::uint32_t>(key) ^ 0x8000'0000u; }
  // Neighbouring keys take neighbouring slots, which suits runs of days and months.
  static constexpr std::size_t indexOf(std::int32_t key) { return static_cast<std::uint32_t>(key) & (slotCount - 1); }

  std::array<std::atomic<std::uint64_t>, slotCount> slots_{};
};

/// For keys and values of any size: every thread has slots of its own, made at its first store and freed with it.
/// Evicting bids each thread drop its slots at its next look-up. `Tag` tells apart caches of one shape.
template <typename Entry, std::size_t slotCount, typename Tag>
class ThreadCache {
  static_assert((slotCount & (slotCount - 1)) == 0);

 public:
  /// This thread's slot for a hash; none until something was stored in it since the last eviction. The caller compares
  /// the whole key. Valid until this thread stores or looks up again.
  [[nodiscard]] const Entry* find(std::size_t hash) const {
    const Slots* slots = slots_;
    if (slots == nullptr || slots->generation != generation_.load(std::memory_order_relaxed)) return nullptr;
    const std::optional<Entry>& entry = slots->entries[hash & (slotCount - 1)];
    return entry ? &*entry : nullptr;
  }

  /// Gives the entry as kept; like a found one it is valid until this thread stores or looks up again.
  const Entry& store(std::size_t hash, const Entry& entry) {
    const std::uint64_t generation = generation_.load(std::memory_order_relaxed);
    if (slots_ == nullptr || slots_->generation != generation) makeSlots(generation);
    return slots_->entries[hash & (slotCount - 1)].emplace(entry);
  }

  void evict() { generation_.fetch_add(1, std::memory_order_relaxed); }

 private:
  struct Slots {
    std::uint64_t generation = 0;
    std::array<std::optional<Entry>, slotCount> entries;
  };
  struct Owner {
    std::unique_ptr<Slots> slots;
    ~Owner() { slots_ = nullptr; }
  };

  static void makeSlots(std::uint64_t generation) {
    static thread_local Owner owner;
    owner.slots = std::make_unique<Slots>();
    owner.slots->generation = generation;
    slots_ = owner.slots.get();
  }

  // A plain pointer beside its owner: a look-up then needs no check whether the thread has set it up.
  inline static constinit thread_local Slots* slots_ = nullptr;
  std::atomic<std::uint64_t> generation_ = 0;
};

}  // namespace qz
