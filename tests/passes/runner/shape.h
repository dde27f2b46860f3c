// Checks of what every graph must look like between steps.
//
// To add one: write it in shape.cpp and give it a row in the table there.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cdfg/graph.h"
#include "driver/pipeline.h"

struct ShapeCheck {
  const char* name;
  // The step from which on the rule holds; null: always. It is checked after that step and every
  // later one of a case.
  const char* from_step;
  void (*check)(const CdfgGraph* graph, std::vector<std::string>* problems);
};

std::span<const ShapeCheck> ShapeChecks();

// Runs the checks that hold after `steps`, of which the last has just run; none: on a graph as
// read. Each problem is one line.
std::vector<std::string> FindShapeProblems(const CdfgGraph* graph,
                                           std::span<const PipelineStep* const> steps);
