// Chunks of memory for graphs of any size.
//
// A large graph is walked from end to end by every pass. In pages of the usual size, the first
// touch of each page and the search for where it lies take a third of the whole run; in large pages
// they take next to nothing. A small graph stays in usual pages, so that it does not cost more than
// it holds.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "cdfg/memory.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

inline constexpr std::size_t kLargePage = std::size_t{2} << 20;

// `size` bytes for std::free to release, null when memory is short. Those of a large graph lie in
// large pages where the system has them; the size is then a multiple of kLargePage.
inline void* NewChunk(std::size_t size, bool is_large_graph) {
  if (!is_large_graph) return std::malloc(size);
  void* chunk = std::aligned_alloc(kLargePage, size);
#ifdef MADV_HUGEPAGE
  // Only advice: where it is not taken, everything works as before.
  if (chunk != nullptr) (void)madvise(chunk, size, MADV_HUGEPAGE);
#endif
  return chunk;
}

struct ChunkReleaser {
  void operator()(void* chunk) const { std::free(chunk); }
};
// An array that owns its memory; its elements need no destruction.
template <class Element>
using Chunk = std::unique_ptr<Element[], ChunkReleaser>;

// Room for `count` elements, not initialised, in large pages when it fills some. Without memory the
// handler is called (cdfg/memory.h).
template <class Element>
Chunk<Element> MakeChunk(std::size_t count) {
  const std::size_t size = count * sizeof(Element);
  void* memory = nullptr;
  if (size >= 2 * kLargePage) {
    memory = NewChunk((size + kLargePage - 1) / kLargePage * kLargePage, true);
  }
  if (memory == nullptr) memory = MemRealloc(nullptr, size);
  return Chunk<Element>(static_cast<Element*>(memory));
}
