// A stack for walks, which are mostly short and now and then as deep as the graph.
//
// The first elements need no memory of their own: there are as many walks as a design has
// statements, and a vector for each would spend more time in the allocator than the walk takes.
// Beyond that it grows by realloc, which moves a large block by its page tables and not byte by
// byte: a walk a million levels deep touches the memory of its deepest point once.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

#include "cdfg/memory.h"

// Elements are plain data and are moved by byte copy. Asking for an element that is not there is
// the caller's fault.
template <class Element, std::size_t kOwn = 8>
class Stack {
  static_assert(std::is_trivially_copyable_v<Element> && std::is_trivially_destructible_v<Element>);

 public:
  Stack() = default;
  Stack(const Stack&) = delete;
  Stack& operator=(const Stack&) = delete;
  ~Stack() {
    if (elements_ != Own()) MemFree(elements_);
  }

  bool IsEmpty() const { return size_ == 0; }
  std::size_t Size() const { return size_; }
  Element& Back() { return elements_[size_ - 1]; }
  const Element& Back() const { return elements_[size_ - 1]; }
  // The element that lies `depth` below the topmost.
  Element& Below(std::size_t depth) { return elements_[size_ - 1 - depth]; }
  const Element& Below(std::size_t depth) const { return elements_[size_ - 1 - depth]; }
  Element& operator[](std::size_t index) { return elements_[index]; }
  const Element& operator[](std::size_t index) const { return elements_[index]; }
  // Behind the topmost element.
  Element* End() { return elements_ + size_; }

  void Push(const Element& element) {
    if (size_ == capacity_) Grow();
    elements_[size_++] = element;
  }
  void Pop() { --size_; }
  // Takes elements away until `size` are left; does nothing when there are no more.
  void ShrinkTo(std::size_t size) {
    if (size < size_) size_ = size;
  }

 private:
  Element* Own() { return reinterpret_cast<Element*>(own_); }

  [[gnu::noinline]] void Grow() {
    const bool is_own = elements_ == Own();
    void* larger = MemRealloc(is_own ? nullptr : elements_, 2 * capacity_ * sizeof(Element));
    if (larger == nullptr) throw std::bad_alloc();
    if (is_own) std::memcpy(larger, own_, sizeof own_);
    elements_ = static_cast<Element*>(larger);
    capacity_ *= 2;
  }

  alignas(Element) unsigned char own_[kOwn * sizeof(Element)];
  Element* elements_ = Own();
  std::size_t size_ = 0;
  std::size_t capacity_ = kOwn;
};
