// The name table pass: collects the identifiers that the design uses.
#pragma once

#include "cdfg/graph.h"

// Makes the name set anew (cdfg/name_set.h) and fills it with the names of the modules, processes,
// tasks, functions and labels of the design and of all declared objects. Does nothing without a
// root. The graph is not changed. Answers 0.
int CollectNames(CdfgGraph* graph);
