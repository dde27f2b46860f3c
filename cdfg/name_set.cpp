#include "cdfg/name_set.h"

#include <climits>
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

namespace {

void Number(std::string& name, const char* prefix, int digits, int number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*d", digits, number);
  name.assign(prefix).append(text);
}

// Fresh names are asked for in the order of their numbers, and ten that follow one another lie side
// by side: the next ten are fetched while these are used up.
void ExpectNextTen(const char* prefix, int digits, int number) {
  constexpr int kTen = 10;
  if (number % kTen != 0 || number > INT_MAX - kTen) return;
  std::string name;
  Number(name, prefix, digits, number + kTen);
  name_set->Expect(name);
}

}  // namespace

std::string NameSetFresh(const char* prefix, int digits, int* counter) {
  std::string name;
  bool is_taken = false;
  do {
    const int number = *counter;
    *counter = static_cast<int>(static_cast<unsigned>(number) + 1);
    Number(name, prefix, digits, number);
    if (name_set != nullptr) ExpectNextTen(prefix, digits, number);
    is_taken = name_set != nullptr && !name_set->Add(name);
  } while (is_taken);
  return name;
}

void NameSetFree() { name_set.reset(); }
