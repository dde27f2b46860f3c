// Reading ahead for passes that come back to nodes they know: they ask for a node some way before
// they need it, and do not wait for memory when they get there. Asking changes nothing, and any id
// may be asked for.
#pragma once

#include <cstdint>

#include "cdfg/graph_store.h"

namespace read_ahead {

// To the compiler, a function that only asks does nothing, and it drops its calls and those of its
// callers; the empty statement keeps them.
template <std::uintptr_t kBytes>
inline void Fetch(const void* from) {
  constexpr std::uintptr_t kLine = 64;
  const auto start = reinterpret_cast<std::uintptr_t>(from);
  asm volatile("" : : "r"(start));
#pragma GCC unroll 8
  for (std::uintptr_t at = 0; at < kBytes; at += kLine) {
    __builtin_prefetch(reinterpret_cast<const void*>(start + at));
  }
  __builtin_prefetch(reinterpret_cast<const void*>(start + kBytes - 1));
}

// Where nodes are found without a search.
inline bool IsInRow(const CdfgGraph& graph, NodeId id) {
  return static_cast<std::size_t>(id) - 1 < graph.row_length;
}

}  // namespace read_ahead

// Asks for a node and those that follow it in the source text: `kNodes` in all, without their
// attributes.
template <std::uintptr_t kNodes = 1>
inline void CdfgExpectNodes(const CdfgGraph* graph, NodeId id) {
  if (!read_ahead::IsInRow(*graph, id)) return;
  read_ahead::Fetch<kNodes * sizeof(NodeRecord)>(&NodeAt(*graph, id - 1));
}

// Asks for the first `kCount` attributes of a node and those that follow it. The node itself should
// have been asked for a while ago.
template <std::uintptr_t kCount>
inline void CdfgExpectAttributes(const CdfgGraph* graph, NodeId id) {
  if (!read_ahead::IsInRow(*graph, id)) return;
  read_ahead::Fetch<kCount * sizeof(Attribute)>(NodeAt(*graph, id - 1).attributes);
}
