// A copy of a whole function, ready to stand beside the original.
#pragma once

#include "cdfg/graph.h"

// What becomes of the expressions in brace initialisers: shared with the original, or copied.
enum class MemberExpressions { Shared, Copied };

// Copies a function with everything below it and makes the copy's references name the copy's own
// declarations. The copy stands in no chain yet and has the original's name. Answers the copy.
NodeId CopyFunction(CdfgGraph* graph, NodeId function, MemberExpressions members);
