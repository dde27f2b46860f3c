// Copies of functions and prototypes for modules with a prefix: a part of the search for module
// functions (passes/module_functions.h).
#pragma once

#include "cdfg/chain.h"
#include "cdfg/graph.h"
#include "passes/module_list.h"

// Gives each function that the module's function calls, and what that calls in turn, a copy whose
// name begins with the module's prefix, records the copy as the module's, and directs the calls to
// it. The copies stand behind what they are copies of.
void CopyUsedFunctions(CdfgGraph* graph, ModuleFunctionRecord* module);

// Gives each prototype of a function that has copies a copy for each of them.
void CopyPrototypes(CdfgGraph* graph);

// --- What a search for calls enters --------------------------------------------------------------

// The indexes of a variable. `walk` is any walk over expressions.
template <class Walk>
void EnterIndexes(const CdfgGraph* graph, Walk& walk, NodeId port) {
  for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, port, DfgPort_DIMNODE))) {
    walk.Enter(CdfgGetAttr(graph, index, DfgDim_NODE));
  }
}

// The arguments of a call.
template <class Walk>
void EnterArguments(const CdfgGraph* graph, Walk& walk, NodeId call) {
  for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, call, DfgFuncCall_ARGLIST))) {
    walk.Enter(CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL));
  }
}
