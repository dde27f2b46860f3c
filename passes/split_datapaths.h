// The managed operation to datapath pass: one statement per datapath.
#pragma once

#include "cdfg/graph.h"

// Gives every statement of module code a CFG_STATE_DATAPATH of its own, and every body whose first
// statement has no prev its owner as that prev. Answers 0.
int SplitDatapaths(CdfgGraph* graph);
