// Directives: INFO_DIRECTIVE nodes chained by next, each with a type and a text.
#pragma once

#include "cdfg/chain.h"
#include "cdfg/graph.h"

// The DfgDirective_TYPE of directives from the source text.
inline constexpr std::int32_t kModuleDirective = 55;

// The first INFO_DIRECTIVE of the chain with this type, 0 if there is none.
inline NodeId CdfgFindDirective(const CdfgGraph* graph, NodeId first, std::int32_t type) {
  for (const NodeId node : NextChain(graph, first)) {
    if (CdfgGetKind(graph, node) == INFO_DIRECTIVE &&
        CdfgGetAttrInt(graph, node, DfgDirective_TYPE) == type) {
      return node;
    }
  }
  return 0;
}
