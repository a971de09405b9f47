#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

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
  static constexpr std::int32_t noKey = INT32_MIN;

  constexpr WordCache() { evict(); }

  [[nodiscard]] std::optional<std::uint32_t> find(std::int32_t key) const {
    const std::uint64_t word = slotOf(key).load(std::memory_order_relaxed);
    if (static_cast<std::int32_t>(word >> 32) != key) return std::nullopt;
    return static_cast<std::uint32_t>(word);
  }

  /// REQUIRES: key != noKey.
  void store(std::int32_t key, std::uint32_t value) {
    slotOf(key).store(wordOf(key, value), std::memory_order_relaxed);
  }

  constexpr void evict() {
    for (std::atomic<std::uint64_t>& slot : slots_) {
      if (std::is_constant_evaluated()) {
        std::construct_at(&slot, wordOf(noKey, 0));
      } else {
        slot.store(wordOf(noKey, 0), std::memory_order_relaxed);
      }
    }
  }

 private:
  static constexpr std::uint64_t wordOf(std::int32_t key, std::uint32_t value) {
    return std::uint64_t{static_cast<std::uint32_t>(key)} << 32 | value;
  }
  // Neighbouring keys take neighbouring slots, which suits runs of days and months.
  [[nodiscard]] static std::size_t indexOf(std::int32_t key) {
    return static_cast<std::uint32_t>(key) & (slotCount - 1);
  }
  [[nodiscard]] const std::atomic<std::uint64_t>& slotOf(std::int32_t key) const { return slots_[indexOf(key)]; }
  [[nodiscard]] std::atomic<std::uint64_t>& slotOf(std::int32_t key) { return slots_[indexOf(key)]; }

  std::array<std::atomic<std::uint64_t>, slotCount> slots_;
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
    const Slots* slots = slots_.get();
    if (slots == nullptr || slots->generation != generation_.load(std::memory_order_relaxed)) return nullptr;
    const std::optional<Entry>& entry = slots->entries[hash & (slotCount - 1)];
    return entry ? &*entry : nullptr;
  }

  void store(std::size_t hash, const Entry& entry) {
    const std::uint64_t generation = generation_.load(std::memory_order_relaxed);
    if (!slots_ || slots_->generation != generation) {
      slots_ = std::make_unique<Slots>();
      slots_->generation = generation;
    }
    slots_->entries[hash & (slotCount - 1)] = entry;
  }

  void evict() { generation_.fetch_add(1, std::memory_order_relaxed); }

 private:
  struct Slots {
    std::uint64_t generation = 0;
    std::array<std::optional<Entry>, slotCount> entries;
  };

  inline static thread_local std::unique_ptr<Slots> slots_;
  std::atomic<std::uint64_t> generation_ = 0;
};

}  // namespace qz
