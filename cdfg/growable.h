// A growable array for the graph store, whose allocation failures are results and not stops.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <type_traits>

// Elements are plain data and are moved by byte copy when the array grows (by doubling).
template <class T>
struct Growable {
  static_assert(std::is_trivially_copyable_v<T>);

  T* items = nullptr;
  std::size_t size = 0;
  std::size_t capacity = 0;

  Growable() = default;
  Growable(const Growable&) = delete;
  Growable& operator=(const Growable&) = delete;
  ~Growable() { std::free(items); }

  T& operator[](std::size_t index) { return items[index]; }
  const T& operator[](std::size_t index) const { return items[index]; }

  // Appends `item`; false, with the array unchanged, when memory is short.
  bool Push(const T& item) {
    if (size == capacity && !Grow()) return false;
    items[size++] = item;
    return true;
  }

 private:
  bool Grow() {
    const std::size_t wanted = capacity == 0 ? 16 : capacity * 2;
    if (wanted > std::numeric_limits<std::size_t>::max() / sizeof(T)) return false;
    void* block = std::realloc(items, wanted * sizeof(T));
    if (block == nullptr) return false;
    items = static_cast<T*>(block);
    capacity = wanted;
    return true;
  }
};
