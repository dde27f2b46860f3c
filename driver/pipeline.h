// The elaboration pipeline: which passes run, in which order, and what each is announced with.
#pragma once

#include <span>

#include "cdfg/graph.h"

struct PipelineStep {
  const char* name;              // for tests and tools, which run single passes
  const char* progress;          // the line printed under -debug; null: none of its own
  int (*run)(CdfgGraph* graph);  // null: the pass is not built yet
};

// All steps, in order.
std::span<const PipelineStep> Pipeline();

// Runs one step within the work a graph of this size may need; a step not built yet does nothing.
// When memory has become short meanwhile, the run ends here.
void RunStep(const PipelineStep& step, CdfgGraph* graph);

// Releases what the passes keep beside the graph, the set of used names and the list of module
// functions, and sets their counters back, as at the start of the program.
void FreePassState();
