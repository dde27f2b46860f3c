#include "cdfg/memory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

void (*oom_handler)() = nullptr;
void (*stop_handler)(int) = nullptr;

void* Checked(void* block) {
  if (block == nullptr && oom_handler != nullptr) oom_handler();
  return block;
}

// A size of zero must still give a block, since null means failure.
std::size_t AtLeastOne(std::size_t size) { return size == 0 ? 1 : size; }

}  // namespace

void MemSetOomHandler(void (*handler)()) {
  oom_handler = handler;
  std::set_new_handler(handler);
}

void* MemAllocZero(std::size_t size) { return Checked(std::calloc(1, AtLeastOne(size))); }

void* MemRealloc(void* block, std::size_t size) {
  return Checked(std::realloc(block, AtLeastOne(size)));
}

char* MemStrdup(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t size = std::strlen(text) + 1;
  void* copy = Checked(std::malloc(size));
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

void MemFree(void* block) { std::free(block); }

void CdfgStop(int status) {
  if (stop_handler != nullptr) stop_handler(status);
  std::exit(status);
}

void CdfgSetStopHandler(void (*handler)(int status)) { stop_handler = handler; }
