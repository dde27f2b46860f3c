// Records of plain data, one behind the other, of which there may be as many as nodes.
//
// A std::vector that outgrows its memory takes twice as much elsewhere and touches all of it; the
// first touch of memory is what much of a large run waits for. Here the system moves a large array
// without touching it.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "cdfg/large_pages.h"
#include "cdfg/memory.h"

template <class Record>
class Records {
  static_assert(std::is_trivially_copyable_v<Record>);

 public:
  std::size_t Size() const { return size_; }
  bool IsEmpty() const { return size_ == 0; }

  Record& operator[](std::size_t place) { return items_[place]; }
  const Record& operator[](std::size_t place) const { return items_[place]; }
  Record& Last() { return items_[size_ - 1]; }
  const Record& Last() const { return items_[size_ - 1]; }

  // The record may be one of the array itself.
  Record& Add(Record record) {
    if (size_ == capacity_) Grow();
    return *std::construct_at(items_.get() + size_++, record);
  }
  // Keeps the first `size` records.
  void Cut(std::size_t size) { size_ = size; }

 private:
  void Grow() {
    constexpr std::size_t kFirst = 16;
    const std::size_t larger = capacity_ == 0 ? kFirst : capacity_ * 2;
    void* moved = MemRealloc(items_.get(), larger * sizeof(Record));
    (void)items_.release();
    items_.reset(static_cast<Record*>(moved));
    capacity_ = larger;
  }

  Chunk<Record> items_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};
