// Runs a case and compares what comes out with what the case expects.
#pragma once

#include <string>
#include <vector>

#include "tests/passes/runner/case_file.h"
#include "tests/passes/runner/case_graph.h"

// What the steps of a case did.
struct Outcome {
  int status = 0;      // other than 0: the run was stopped
  std::string after;   // the graph as a file; empty when the run was stopped
  std::string output;  // printed on standard output
  std::string state;   // as DescribeState has it
  std::vector<std::string> shape_problems;
  bool is_loose = false;  // a rule was broken that a step brings about
};

// Which expectations hold.
struct Verdict {
  bool after = true;
  bool output = true;
  bool status = true;
  bool state = true;
  bool shape = true;
  std::string details;  // of what does not hold; empty: passed
};

// A case with everything that is known of it after its run.
struct CaseRun {
  PassCase parsed;
  CaseNames names;
  Outcome outcome;
  Verdict verdict;
  std::string mistake;  // what is wrong with the case itself; it was not run then
};

// Never fails: what is wrong stands in the result.
CaseRun RunCase(const std::string& path, const std::string& content);

// Runs the whole pipeline over a design as it stands in a file. Nothing may be printed, nothing may
// stop the run, and the rules of shape have to hold after every step.
CaseRun RunDesign(const std::string& path, const std::string& bytes);

bool Passed(const CaseRun& run);

// The content of the case's file with the expectations that do not hold replaced by what came out.
// The others, the intent and the graph before stay as they are written. A state is only written
// where the case has one.
std::string RewrittenCase(const CaseRun& run);
