// Chunks of memory for graphs of any size.
//
// A large graph is walked from end to end by every pass. In pages of the usual size, the first
// touch of each page and the search for where it lies take a third of the whole run; in large pages
// they take next to nothing. A small graph stays in usual pages, so that it does not cost more than
// it holds.
#pragma once

#include <cstddef>
#include <cstdlib>

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
