// Checks of what every graph must look like between steps.
//
// To add one: write it in shape.cpp or a file beside it and give it a row in the table there.
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
  // The step from which on it no longer does; null: it holds to the end.
  const char* until_step;
  void (*check)(const CdfgGraph* graph, std::vector<std::string>* problems);
};

std::span<const ShapeCheck> ShapeChecks();

// What a graph is held to.
enum class ShapeRules {
  All,
  Loose,  // only the rules that hold in every graph, not those that a step brings about
};

// Runs the checks that hold after `steps`, of which the last has just run; none: on a graph as
// read. Each problem is one line.
std::vector<std::string> FindShapeProblems(const CdfgGraph* graph,
                                           std::span<const PipelineStep* const> steps,
                                           ShapeRules rules = ShapeRules::All);

// The name of a node's kind.
std::string KindName(const CdfgGraph* graph, NodeId node);

// --- shape_flat.cpp: the statements of module code -----------------------------------------------

void CheckStatementsAreFlat(const CdfgGraph* graph, std::vector<std::string>* problems);
void CheckTargetsAreFlat(const CdfgGraph* graph, std::vector<std::string>* problems);
void CheckDatapathsAreRemade(const CdfgGraph* graph, std::vector<std::string>* problems);
void CheckDatapathsAreSingle(const CdfgGraph* graph, std::vector<std::string>* problems);
