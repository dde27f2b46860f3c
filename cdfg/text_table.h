// A set of texts that only grows: for names of which there are as many as nodes.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "cdfg/hash.h"

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
  void NewBlock(std::size_t at_least) {
    constexpr std::size_t kBlockSize = 16 * 1024;
    left_ = at_least > kBlockSize ? at_least : kBlockSize;
    blocks_.push_back(std::make_unique<char[]>(left_));
    block_ = blocks_.back().get();
  }

  std::vector<std::unique_ptr<char[]>> blocks_;
  char* block_ = nullptr;
  std::size_t left_ = 0;
};

// A hash table by open addressing, with each hash beside the text, so that other texts are hardly
// ever looked at. Texts may hold any bytes.
class TextTable {
 public:
  bool Contains(std::string_view text) const {
    return used_ != 0 && slots_[SlotOf(text, TextHash{}(text))].text != nullptr;
  }

  // False, and nothing is added, when the text is there already.
  bool Add(std::string_view text) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    const std::size_t hash = TextHash{}(text);
    Slot& slot = slots_[SlotOf(text, hash)];
    if (slot.text != nullptr) return false;
    slot = {texts_.Keep(text), text.size(), hash};
    ++used_;
    return true;
  }

 private:
  struct Slot {
    const char* text = nullptr;  // null: empty
    std::size_t length = 0;
    std::size_t hash = 0;
  };

  static bool Holds(const Slot& slot, std::string_view text, std::size_t hash) {
    return slot.hash == hash && std::string_view(slot.text, slot.length) == text;
  }

  // The slot that holds the text, or the empty one where it belongs.
  std::size_t SlotOf(std::string_view text, std::size_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    while (slots_[place].text != nullptr && !Holds(slots_[place], text, hash)) {
      place = (place + 1) & mask;
    }
    return place;
  }

  void Grow() {
    std::vector<Slot> old(slots_.empty() ? 1024 : slots_.size() * 2);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.text == nullptr) continue;
      std::size_t place = slot.hash & mask;
      while (slots_[place].text != nullptr) place = (place + 1) & mask;
      slots_[place] = slot;
    }
  }

  TextArena texts_;
  std::vector<Slot> slots_;  // a power of two of them
  std::size_t used_ = 0;
};
