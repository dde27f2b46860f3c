// The division inout directive pass: spreads directives of structure variables onto their members.
#pragma once

#include "cdfg/graph.h"

// Copies "input", "output" and "inout" directives that name a member path onto that member's
// declaration, and a "float" directive of a structure onto every float or double member, for the
// arguments and declarations of module code and for global declarations. Answers 0.
int DivideInoutDirectives(CdfgGraph* graph);
