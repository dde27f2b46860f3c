// Which global variables the module code of a design uses.
#pragma once

#include <vector>

#include "cdfg/graph.h"
#include "cdfg/walk.h"

// The declarations of the global variables that the functions which `is_module_code` answers 1 for
// refer to, the last one of the design first. What is looked at is what FoldBodies folds: the
// expressions of the statements and the array sizes of the declarations, and beyond that the whole
// of each initialiser. The graph is not changed; user data is in use meanwhile and is clear
// afterwards.
std::vector<NodeId> FindUsedGlobals(CdfgGraph* graph, FunctionCursor::Test is_module_code);
