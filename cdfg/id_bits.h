// A set of ids, as one bit each: a hash table of words that hold sixty-four neighbours. Ids in a
// row, as nearly all graphs have them, take a byte for every two nodes; the most awkward ones take
// some fifty bytes each.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "cdfg/hash.h"
#include "cdfg/large_pages.h"

class IdBits {
 public:
  bool Contains(NodeId id) const {
    return used_ != 0 && (slots_[SlotOf(id / kWordIds)].bits & BitOf(id)) != 0;
  }

  // False when the id is there already.
  bool Add(NodeId id) {
    if (2 * (used_ + 1) > slot_count_) Grow();
    Slot& slot = slots_[SlotOf(id / kWordIds)];
    if (slot.word == kEmpty) {
      slot.word = id / kWordIds;
      ++used_;
    }
    if ((slot.bits & BitOf(id)) != 0) return false;
    slot.bits |= BitOf(id);
    return true;
  }

  // The id may be missing.
  void Remove(NodeId id) {
    if (used_ != 0) slots_[SlotOf(id / kWordIds)].bits &= ~BitOf(id);
  }

 private:
  static constexpr NodeId kWordIds = 64;
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;  // above every id's word

  struct Slot {
    std::uint64_t bits = 0;
    std::uint32_t word = kEmpty;
  };

  static std::uint64_t BitOf(NodeId id) { return std::uint64_t{1} << (id % kWordIds); }

  // The slot of a word, or the empty one where it belongs. An empty one has no bits.
  std::size_t SlotOf(std::uint32_t word) const {
    const std::size_t mask = slot_count_ - 1;
    std::size_t place = IdHash{}(word)&mask;
    while (slots_[place].word != kEmpty && slots_[place].word != word) place = (place + 1) & mask;
    return place;
  }

  void Grow() {
    constexpr std::size_t kFirstSlots = 64;
    const std::size_t old_count =
        std::exchange(slot_count_, used_ == 0 ? kFirstSlots : slot_count_ * 2);
    const Chunk<Slot> old = std::exchange(slots_, MakeChunk<Slot>(slot_count_));
    std::uninitialized_fill_n(slots_.get(), slot_count_, Slot{});
    for (std::size_t i = 0; i < old_count; ++i) {
      if (old[i].word != kEmpty) slots_[SlotOf(old[i].word)] = old[i];
    }
  }

  Chunk<Slot> slots_;
  std::size_t slot_count_ = 0;  // a power of two
  std::size_t used_ = 0;
};
