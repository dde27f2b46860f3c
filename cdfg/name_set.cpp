#include "cdfg/name_set.h"

#include <cstdio>
#include <memory>
#include <string>

#include "cdfg/text_table.h"

namespace {

// One table for all: names that differ in a counter alone are asked for one after the other, and
// lie side by side here, while their byte sums would scatter them.
std::unique_ptr<TextTable> name_set;

}  // namespace

unsigned NameSetBucket(const char* name) {
  unsigned sum = 0;
  for (; *name != '\0'; ++name) {
    sum += static_cast<unsigned>(static_cast<int>(static_cast<signed char>(*name)));
  }
  return sum & 255U;
}

int NameSetInit() {
  name_set = std::make_unique<TextTable>();
  return 0;
}

int NameSetAdd(const char* name) {
  if (name_set == nullptr || name == nullptr) return -1;
  name_set->Add(name);
  return 0;
}

int NameSetContains(const char* name) {
  if (name_set == nullptr || name == nullptr) return 0;
  return name_set->Contains(name) ? 1 : 0;
}

std::string NameSetFresh(const char* prefix, int digits, int* counter) {
  std::string name;
  bool is_taken = false;
  do {
    char number[32];
    std::snprintf(number, sizeof number, "%.*d", digits, *counter);
    *counter = static_cast<int>(static_cast<unsigned>(*counter) + 1);
    name.assign(prefix).append(number);
    is_taken = name_set != nullptr && !name_set->Add(name);
  } while (is_taken);
  return name;
}

void NameSetFree() { name_set.reset(); }
