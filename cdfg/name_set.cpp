#include "cdfg/name_set.h"

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

namespace {

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const {
    return std::hash<std::string_view>{}(name);
  }
};

// Names that differ in a counter have nearly the same byte sum and crowd into few of the 256
// buckets. So each bucket is a hash set of its own, and crowding costs nothing.
using Bucket = std::unordered_set<std::string, NameHash, std::equal_to<>>;
using Buckets = std::array<Bucket, 256>;

std::unique_ptr<Buckets> name_set;

}  // namespace

unsigned NameSetBucket(const char* name) {
  unsigned sum = 0;
  for (; *name != '\0'; ++name) {
    sum += static_cast<unsigned>(static_cast<int>(static_cast<signed char>(*name)));
  }
  return sum & 255U;
}

int NameSetInit() {
  name_set = std::make_unique<Buckets>();
  return 0;
}

int NameSetAdd(const char* name) {
  if (name_set == nullptr || name == nullptr) return -1;
  (*name_set)[NameSetBucket(name)].emplace(name);
  return 0;
}

int NameSetContains(const char* name) {
  if (name_set == nullptr || name == nullptr) return 0;
  return (*name_set)[NameSetBucket(name)].contains(std::string_view(name)) ? 1 : 0;
}

std::string NameSetFresh(const char* prefix, int digits, int* counter) {
  std::string name;
  do {
    char number[32];
    std::snprintf(number, sizeof number, "%.*d", digits, *counter);
    *counter = static_cast<int>(static_cast<unsigned>(*counter) + 1);
    name.assign(prefix).append(number);
  } while (NameSetContains(name.c_str()) == 1);
  NameSetAdd(name.c_str());
  return name;
}

void NameSetFree() { name_set.reset(); }
