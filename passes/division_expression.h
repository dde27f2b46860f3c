// The division expression pass: from here every expression of module code is flat.
#pragma once

#include "cdfg/graph.h"

// Takes every nested computation of module code out into a statement of its own that assigns a
// temporary variable (passes/temporaries.h), in the order of evaluation, and reduces conditions and
// return values to one reference or one comparison. A statement with a root that no statement can
// have is said in one line and kept. Answers 0.
int DivideExpressions(CdfgGraph* graph);
