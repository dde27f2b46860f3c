// The statement to block pass: makes every loop body of module code a block.
#pragma once

#include "cdfg/graph.h"

// Wraps each CFG_LOOP_STAT body that is empty or does not begin with CFG_STATE_BEGIN in a new
// CFG_STATE_BEGIN ... CFG_STATE_END pair. Functions that are not module code are left alone.
// Answers 0.
int StatementsToBlocks(CdfgGraph* graph);
