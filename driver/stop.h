// How a run ends when memory is short.
#pragma once

#include "cdfg/graph.h"

// Prints "kelvo :Error : Short of memory" and ends the run with status 255.
[[noreturn]] void StopShortOfMemory();

// Does so when an operation of this graph has failed for lack of memory.
void StopIfMemoryIsShort(const CdfgGraph* graph);
