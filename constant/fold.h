// The three folding passes: constant expressions become constants.
//
//   int a[2 * 8];             ->  int a[16];           FoldDeclarations, all code
//   x = y + (3 + 4);          ->  x = y + 7;           FoldBodies, module code
//   f(a);  where int a[N+1]   ->  a's size folded      FoldMainCalls, module calls of main
//
// They run in this order. A fold hangs a new constant in the place of an operation; the operation
// and its operands stay in the graph, but nothing leads to them from there any more. Operations
// that have no constant value stay where they are. Nothing is reported, and what is missing in the
// graph ends that branch of a walk.
#pragma once

#include "cdfg/graph.h"
#include "cdfg/walk.h"

// Folds the array sizes of every declaration of the design, and of the structure members below
// them, whose initialisers are folded too. Initialisers of the declarations themselves are left to
// FoldBodies. Answers 0.
int FoldDeclarations(CdfgGraph* graph);

// Folds the expressions, array sizes and initialisers in the functions that `is_module_code`
// answers 1 for, and then the declarations of the global variables that those functions use.
// Answers 0.
int FoldBodies(CdfgGraph* graph, FunctionCursor::Test is_module_code);

// Folds the array sizes of the variables that statements of main hand to calls with a module
// directive. Answers 0.
int FoldMainCalls(CdfgGraph* graph);
