// The function roll instance pass: gives calls marked "roll" functions of their own.
#pragma once

#include "cdfg/graph.h"

// Gives every roll call of module code but the first use of its function a copy of that function,
// named <name>_roll_<number>, in front of the calling function, and records the copy as module
// code. Roll calls in the copies are treated the same. Answers 0.
int RollFunctions(CdfgGraph* graph);
