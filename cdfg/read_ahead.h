// Reading ahead: who knows what it will come to asks for it some way before, and does not wait for
// memory when it gets there. Asking changes nothing, and any id may be asked for.
#pragma once

#include <cstdint>

#include "cdfg/graph_store.h"

namespace read_ahead {

// How many nodes a walk asks ahead by.
inline constexpr NodeId kAhead = 49;

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

// The node's record, null for a node that is not found without a search.
inline const NodeRecord* Record(const CdfgGraph& graph, NodeId id) {
  return id - 1 < graph.direct_length ? &NodeAt(graph, id - 1) : nullptr;
}
}  // namespace read_ahead

// Asks for a node and those that follow it in the source text: `kNodes` in all, without attributes
// that lie outside them.
template <std::uintptr_t kNodes = 1>
inline void CdfgExpectNodes(const CdfgGraph* graph, NodeId id) {
  const NodeRecord* node = read_ahead::Record(*graph, id);
  if (node != nullptr) read_ahead::Fetch<kNodes * sizeof(NodeRecord)>(node);
}

// Asks for the attributes of a node that lie outside it, and for those of the nodes that follow:
// `kCount` in all. The node itself should have been asked for a while ago.
template <std::uintptr_t kCount>
inline void CdfgExpectAttributes(const CdfgGraph* graph, NodeId id) {
  const NodeRecord* node = read_ahead::Record(*graph, id);
  if (node == nullptr || !HasRun(*node)) return;
  read_ahead::Fetch<kCount * sizeof(Attribute)>(RunAt(graph->attributes, node->own[0].value));
}

// Asks for the links and positions of a node and those that follow it: `kNodes` in all.
template <std::uintptr_t kNodes>
inline void CdfgExpectRest(const CdfgGraph* graph, NodeId id) {
  if (read_ahead::Record(*graph, id) == nullptr) return;
  read_ahead::Fetch<kNodes * sizeof(NodeRest)>(&RestAt(*graph, id - 1));
}

// Asks for what a walk at node `id` will want soon. Nodes lie in the order of the source text, and
// most walks go that way too; but they leap over what they skip, by distances that no processor
// guesses. Without this a walk over a large design waits for memory at every statement.
inline void CdfgReadAhead(const CdfgGraph* graph, NodeId id) {
  constexpr std::uintptr_t kNodes = 8;
  CdfgExpectNodes<kNodes>(graph, id + read_ahead::kAhead);
}

// The same for links and positions. Who walks statements mostly links others to them, or looks
// where they come from.
inline void CdfgReadRestAhead(const CdfgGraph* graph, NodeId id) {
  constexpr std::uintptr_t kNodes = 12;
  CdfgExpectRest<kNodes>(graph, id + read_ahead::kAhead);
}
