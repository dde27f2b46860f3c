// The modify structure pass: no structure is defined inside another one.
#pragma once

#include "cdfg/graph.h"

// Lifts structure definitions that stand inside members of a tagged structure out in front of that
// structure's definition, gives nested structures without a tag one, and makes the members name the
// plain structure. Tags made are added to the name set. Answers 0.
int ModifyStructures(CdfgGraph* graph);

// Sets the counter of the tags back to its start, which a run of the program never does.
void ResetStructureTags();
