#include "cdfg/name_set.h"

#include <array>
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

// One bucket: a hash table of its own, by open addressing.
class Bucket {
 public:
  bool Contains(std::string_view name) const {
    return !slots_.empty() && slots_[SlotOf(name)] != nullptr;
  }

  // False, and nothing is added, when the name is there already.
  bool Add(std::string_view name, TextArena& texts) {
    if (2 * (used_ + 1) > slots_.size()) Grow();
    const char*& slot = slots_[SlotOf(name)];
    if (slot != nullptr) return false;
    slot = texts.Keep(name);
    ++used_;
    return true;
  }

 private:
  // The slot that holds the name, or the empty one where it belongs.
  std::size_t SlotOf(std::string_view name) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = TextHash{}(name)&mask;
    while (slots_[slot] != nullptr && name != slots_[slot]) slot = (slot + 1) & mask;
    return slot;
  }

  void Grow() {
    std::vector<const char*> old(slots_.empty() ? 8 : slots_.size() * 2);
    old.swap(slots_);
    for (const char* name : old) {
      if (name != nullptr) slots_[SlotOf(name)] = name;
    }
  }

  std::vector<const char*> slots_;  // a power of two of them; null: empty
  std::size_t used_ = 0;
};

// Names that differ in a counter have nearly the same byte sum and crowd into few of the 256
// buckets. So each bucket is a hash table, and crowding costs nothing.
struct NameSet {
  std::array<Bucket, 256> buckets;
  TextArena texts;
};

std::unique_ptr<NameSet> name_set;

Bucket& BucketOf(const char* name) { return name_set->buckets[NameSetBucket(name)]; }

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
  BucketOf(name).Add(name, name_set->texts);
  return 0;
}

int NameSetContains(const char* name) {
  if (name_set == nullptr || name == nullptr) return 0;
  return BucketOf(name).Contains(name) ? 1 : 0;
}

std::string NameSetFresh(const char* prefix, int digits, int* counter) {
  std::string name;
  bool is_taken = false;
  do {
    char number[32];
    std::snprintf(number, sizeof number, "%.*d", digits, *counter);
    *counter = static_cast<int>(static_cast<unsigned>(*counter) + 1);
    name.assign(prefix).append(number);
    is_taken = name_set != nullptr && !BucketOf(name.c_str()).Add(name, name_set->texts);
  } while (is_taken);
  return name;
}

void NameSetFree() { name_set.reset(); }
