// Numbers looked up by the hash of what they stand for: the records themselves lie elsewhere, one
// behind the other, and a number says which one it is.
//
//   std::vector<Record> records;
//   HashIndex index;
//   const std::uint32_t found = index.Find(HashOf(key), [&](std::uint32_t number) {
//     return records[number].key == key;
//   });
//
// Open addressing, eight bytes a place, with each hash beside its number, so that other records are
// hardly ever looked at. The hashes are those of cdfg/hash.h, which no file can foresee.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "cdfg/large_pages.h"

class HashIndex {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  // The number with this hash for which `is_it` answers true, kNone if there is none.
  template <class IsIt>
  std::uint32_t Find(std::size_t hash, IsIt is_it) const {
    return used_ == 0 ? kNone : slots_[SlotOf(Shortened(hash), is_it)].number;
  }

  // The same, and `number`, which is not kNone, is entered when there is none and answered. What is
  // answered may be overwritten with another number that the same question finds.
  template <class IsIt>
  std::uint32_t& FindOrAdd(std::size_t hash, std::uint32_t number, IsIt is_it) {
    if (2 * (used_ + 1) > slot_count_) Grow();
    Slot& slot = slots_[SlotOf(Shortened(hash), is_it)];
    if (slot.number == kNone) {
      slot = {number, Shortened(hash)};
      ++used_;
    }
    return slot.number;
  }

 private:
  struct Slot {
    std::uint32_t number = kNone;  // kNone: empty
    std::uint32_t hash = 0;
  };

  static std::uint32_t Shortened(std::size_t hash) { return static_cast<std::uint32_t>(hash); }

  // The slot that holds the number, or the empty one where it belongs.
  template <class IsIt>
  std::size_t SlotOf(std::uint32_t hash, IsIt is_it) const {
    const std::size_t mask = slot_count_ - 1;
    std::size_t place = hash & mask;
    while (slots_[place].number != kNone &&
           !(slots_[place].hash == hash && is_it(slots_[place].number))) {
      place = (place + 1) & mask;
    }
    return place;
  }

  void Grow() {
    constexpr std::size_t kFirstSlots = 32;
    const std::size_t old_count =
        std::exchange(slot_count_, used_ == 0 ? kFirstSlots : slot_count_ * 2);
    const Chunk<Slot> old = std::exchange(slots_, MakeChunk<Slot>(slot_count_));
    std::uninitialized_fill_n(slots_.get(), slot_count_, Slot{});
    const auto is_another = [](std::uint32_t) { return false; };
    for (std::size_t i = 0; i < old_count; ++i) {
      if (old[i].number != kNone) slots_[SlotOf(old[i].hash, is_another)] = old[i];
    }
  }

  Chunk<Slot> slots_;
  std::size_t slot_count_ = 0;  // a power of two
  std::size_t used_ = 0;
};
