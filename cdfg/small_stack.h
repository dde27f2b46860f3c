// A stack whose first elements need no memory of their own.
//
// Most walks are short and shallow, and there are as many of them as a design has statements: a
// vector for each would spend more time in the allocator than the walk takes.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

// Elements are plain data and are moved by byte copy when the stack grows (by doubling). An index
// or a size out of range is the caller's fault.
template <class Element, std::size_t kOwn>
class SmallStack {
  static_assert(std::is_trivially_copyable_v<Element>);
  static_assert(std::is_trivially_destructible_v<Element>);

 public:
  SmallStack() = default;
  SmallStack(const SmallStack&) = delete;
  SmallStack& operator=(const SmallStack&) = delete;
  ~SmallStack() {
    if (elements_ != Own()) ::operator delete(elements_);
  }

  bool Empty() const { return size_ == 0; }
  std::size_t Size() const { return size_; }
  Element& operator[](std::size_t index) { return elements_[index]; }
  // The element that lies `depth` below the top one.
  Element& FromTop(std::size_t depth) { return elements_[size_ - 1 - depth]; }
  Element* End() { return elements_ + size_; }

  void Push(const Element& element) {
    if (size_ == capacity_) Grow();
    elements_[size_++] = element;
  }
  void Pop() { --size_; }
  // Drops the topmost elements, down to `size`.
  void Resize(std::size_t size) { size_ = size; }

 private:
  Element* Own() { return reinterpret_cast<Element*>(own_); }

  [[gnu::noinline]] void Grow() {
    const std::size_t bytes = capacity_ * sizeof(Element);
    auto* larger = static_cast<Element*>(::operator new(2 * bytes));
    std::memcpy(static_cast<void*>(larger), elements_, bytes);
    if (elements_ != Own()) ::operator delete(elements_);
    elements_ = larger;
    capacity_ *= 2;
  }

  alignas(Element) unsigned char own_[kOwn * sizeof(Element)];
  Element* elements_ = Own();
  std::size_t size_ = 0;
  std::size_t capacity_ = kOwn;
};
