// Copies of functions and prototypes for modules with a prefix: a part of the search for module
// functions (passes/module_functions.h).
#pragma once

#include <cstdint>

#include "cdfg/graph.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

// Gives each function that the module's function calls, and what that calls in turn, a copy whose
// name begins with the module's prefix, records the copy as the module's, and directs the calls to
// it. The copies stand behind what they are copies of.
void CopyUsedFunctions(CdfgGraph* graph, ModuleFunctionRecord* module);

// Gives each prototype of a function that has copies a copy for each of them.
void CopyPrototypes(CdfgGraph* graph);

// What a search for calls enters at a node of an expression. `kind` is the node's when it was
// visited, `walk` any walk over expressions.
template <class Walk>
void EnterForCalls(const CdfgGraph* graph, Walk& walk, NodeId node, std::uint32_t kind) {
  if (kind == DFG_OPERATION) {
    walk.EnterOperands(node);
  } else if (kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_VAR) {
    CdfgEnterListed(graph, walk, CdfgGetAttr(graph, node, DfgPort_DIMNODE), DfgDim_NODE);
  } else if (kind == DFG_FUNC_CALL) {
    CdfgEnterListed(graph, walk, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST), DfgPortInfo_SIGNAL);
  }
}
