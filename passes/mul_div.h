// The multiplication and division pass: temporaries for operands of floating type.
#pragma once

#include "cdfg/graph.h"

// In module code, copies every variable or constant of type float, double or long double that a
// statement multiplies or divides into a temporary, in a datapath in front of the statement's, and
// makes the operation read the temporary. Answers 0.
int MulDivToTemporaries(CdfgGraph* graph);
