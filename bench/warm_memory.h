// Memory that has been touched lately.
//
// The free memory of a virtual machine may lie with its host, which takes many times longer to hand
// it out than the system takes to clear it: what is measured would depend on what ran before. So
// memory is touched and given back before the clock starts. The system still hands it out page by
// page and clears each.
#pragma once

#include <cstddef>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace bench {

inline void WarmMemory(std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kPage = 4096;
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == MAP_FAILED) return;
  (void)madvise(block, bytes, MADV_HUGEPAGE);
  auto* touched = static_cast<volatile char*>(block);
  for (std::size_t at = 0; at < bytes; at += kPage) touched[at] = 1;
  munmap(block, bytes);
#else
  (void)bytes;
#endif
}

}  // namespace bench
