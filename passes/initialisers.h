// The pass that turns initialisers of module code into assignments.
#pragma once

#include "cdfg/graph.h"

// In every module function, makes an assignment of each initialiser that cannot stay an initial
// value, one for each element of an array, and takes the initialiser away. The assignments stand at
// the start of the body for declarations of the function itself, else behind the group of the
// declaration. Warns on standard output about array sizes that are no constants. Answers 0.
int InitialisersToAssignments(CdfgGraph* graph);
