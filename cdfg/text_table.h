// A set of texts that only grows: for names of which there are as many as nodes.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "cdfg/hash.h"
#include "cdfg/large_pages.h"

// Texts side by side in large blocks, released all at once.
class TextArena {
 public:
  // The copy of a text, never null, without a terminating zero.
  const char* Keep(std::string_view text) {
    if (left_ <= text.size()) NewBlock(text.size() + 1);
    char* copy = block_;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    block_ += text.size();
    left_ -= text.size();
    return copy;
  }

 private:
  // Where there are many blocks already, the next ones are large.
  void NewBlock(std::size_t at_least) {
    constexpr std::size_t kBlockSize = 16 * 1024;
    constexpr std::size_t kUsualBlocks = 64;
    const std::size_t size = blocks_.size() < kUsualBlocks ? kBlockSize : 2 * kLargePage;
    left_ = at_least > size ? at_least : size;
    blocks_.push_back(MakeChunk<char>(left_));
    block_ = blocks_.back().get();
  }

  std::vector<Chunk<char>> blocks_;
  char* block_ = nullptr;
  std::size_t left_ = 0;
};

// A hash table by open addressing, with each hash beside the text, so that other texts are hardly
// ever looked at. Texts may hold any bytes, up to 4 GB of them.
class TextTable {
 public:
  bool Contains(std::string_view text) const {
    return used_ != 0 && slots_[SlotOf(text, HashOf(text))].text != nullptr;
  }

  // Says that the text, and others that differ in their last byte alone, will be asked for soon.
  void Expect(std::string_view text) const {
    if (used_ == 0) return;
    constexpr std::size_t kNeighbours = 16;
    constexpr std::size_t kLine = 64;
    const std::size_t first = HashOf(text) & (slot_count_ - 1) & ~(kNeighbours - 1);
    const auto* bytes = reinterpret_cast<const unsigned char*>(slots_.get() + first);
    for (std::size_t at = 0; at < kNeighbours * sizeof(Slot); at += kLine) {
      __builtin_prefetch(bytes + at);
    }
  }

  // False, and nothing is added, when the text is there already.
  bool Add(std::string_view text) {
    if (2 * (used_ + 1) > slot_count_) Grow();
    const std::uint32_t hash = HashOf(text);
    Slot& slot = slots_[SlotOf(text, hash)];
    if (slot.text != nullptr) return false;
    slot = {texts_.Keep(text), static_cast<std::uint32_t>(text.size()), hash};
    ++used_;
    return true;
  }

 private:
  struct Slot {
    const char* text = nullptr;  // null: empty
    std::uint32_t length = 0;
    std::uint32_t hash = 0;
  };

  static std::uint32_t HashOf(std::string_view text) {
    return static_cast<std::uint32_t>(TextHash{}(text));
  }

  static bool Holds(const Slot& slot, std::string_view text, std::uint32_t hash) {
    return slot.hash == hash && std::string_view(slot.text, slot.length) == text;
  }

  // The slot that holds the text, or the empty one where it belongs.
  std::size_t SlotOf(std::string_view text, std::uint32_t hash) const {
    const std::size_t mask = slot_count_ - 1;
    std::size_t place = hash & mask;
    while (slots_[place].text != nullptr && !Holds(slots_[place], text, hash)) {
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
    const std::size_t mask = slot_count_ - 1;
    for (std::size_t i = 0; i < old_count; ++i) {
      if (old[i].text == nullptr) continue;
      std::size_t place = old[i].hash & mask;
      while (slots_[place].text != nullptr) place = (place + 1) & mask;
      slots_[place] = old[i];
    }
  }

  TextArena texts_;
  Chunk<Slot> slots_;
  std::size_t slot_count_ = 0;  // a power of two
  std::size_t used_ = 0;
};
