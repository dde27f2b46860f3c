// The dfg node remake pass: tidies the data-flow nodes of every datapath statement.
#pragma once

#include "cdfg/graph.h"

// For the datapath statements of module code: splits chained assignments into one statement per
// target, makes assigned variables output ports, drops references in front of references, and gives
// a conditional branches of its target's floating type by way of temporaries. Answers 0.
int RemakeDfgNodes(CdfgGraph* graph);
