// The program-wide state that passes keep beside the graph: made fresh for every case, and shown.
#pragma once

#include <set>
#include <string>

#include "cdfg/graph.h"
#include "tests/passes/runner/case_graph.h"

// Puts everything that passes and helpers keep between calls back to how a process starts. A new
// owner of such state adds its reset here. `graph` may be null.
void ResetProgramState(CdfgGraph* graph);

// The strings of all attributes of the graph.
void CollectStrings(const CdfgGraph* graph, std::set<std::string>* strings);

// The state as lines:
//   module @f "f" "fir.c" prefix "p"      a module, newest first: function, name, file, prefix
//     @new1 of @g "p_g" "fir.c"           an instance, newest first: copy, base, name, file
//     @h "h" "fir.c"                      an instance that is no copy
//   code @f @new1                         the functions that are module code, in file order
//   names a b c                           which of `strings` are used names, sorted
// Nothing is shown of a list that is empty and of a name set that does not exist.
std::string DescribeState(const CdfgGraph* graph, const CaseNames& names,
                          const std::set<std::string>& strings);
