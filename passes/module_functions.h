// The module function list pass: finds the functions that become hardware modules, and gives
// prefixed modules copies of all they call.
#pragma once

#include "cdfg/graph.h"

// Fills the module function list (passes/module_list.h) from the call directives of the design,
// copies callees and prototypes for prefixed modules and redirects their calls. Answers 0.
int CollectModuleFunctions(CdfgGraph* graph);
