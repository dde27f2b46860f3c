#include "cdfg/name_set.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cdfg/hash.h"

namespace {

// Texts side by side in large blocks, released all at once.
class TextArena {
 public:
  const char* Keep(std::string_view text) {
    if (left_ <= text.size()) NewBlock(text.size() + 1);
    char* copy = block_;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    block_ += text.size() + 1;
    left_ -= text.size() + 1;
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

// A hash table by open addressing, with enough of each hash beside the text that other texts are
// hardly ever looked at.
class NameTable {
 public:
  bool Contains(std::string_view name) const {
    return !slots_.empty() && slots_[SlotOf(name, TextHash{}(name))].text != nullptr;
  }

  // False, and nothing is added, when the name is there already.
  bool Add(std::string_view name, TextArena& texts) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    const std::size_t hash = TextHash{}(name);
    Slot& slot = slots_[SlotOf(name, hash)];
    if (slot.text != nullptr) return false;
    slot = {texts.Keep(name), hash};
    ++used_;
    return true;
  }

 private:
  struct Slot {
    const char* text = nullptr;  // null: empty
    std::size_t hash = 0;
  };

  // The slot that holds the name, or the empty one where it belongs.
  std::size_t SlotOf(std::string_view name, std::size_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    while (slots_[place].text != nullptr &&
           (slots_[place].hash != hash || name != slots_[place].text)) {
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

  std::vector<Slot> slots_;  // a power of two of them
  std::size_t used_ = 0;
};

// One table for all: names that differ in a counter alone are asked for one after the other, and
// lie side by side here, while their byte sums would scatter them.
struct NameSet {
  NameTable names;
  TextArena texts;
};

std::unique_ptr<NameSet> name_set;

}  // namespace

unsigned NameSetBucket(const char* name) {
  unsigned sum = 0;
  for (; *name != '\0'; ++name) {
    sum += static_cast<unsigned>(static_cast<int>(static_cast<signed char>(*name)));
  }
  return sum & 255U;
}

int NameSetInit() {
  name_set = std::make_unique<NameSet>();
  return 0;
}

int NameSetAdd(const char* name) {
  if (name_set == nullptr || name == nullptr) return -1;
  name_set->names.Add(name, name_set->texts);
  return 0;
}

int NameSetContains(const char* name) {
  if (name_set == nullptr || name == nullptr) return 0;
  return name_set->names.Contains(name) ? 1 : 0;
}

std::string NameSetFresh(const char* prefix, int digits, int* counter) {
  std::string name;
  bool is_taken = false;
  do {
    char number[32];
    std::snprintf(number, sizeof number, "%.*d", digits, *counter);
    *counter = static_cast<int>(static_cast<unsigned>(*counter) + 1);
    name.assign(prefix).append(number);
    is_taken = name_set != nullptr && !name_set->names.Add(name, name_set->texts);
  } while (is_taken);
  return name;
}

void NameSetFree() { name_set.reset(); }
