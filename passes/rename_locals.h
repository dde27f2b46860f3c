// The block-local variable renaming pass: all variables of a module function get names of their
// own.
#pragma once

#include "cdfg/graph.h"

// Renames every variable declared in a nested block of module code whose name a declaration met
// before it in the function has, and all references to it. The name set is neither asked nor told.
// Answers 0.
int RenameBlockLocals(CdfgGraph* graph);
