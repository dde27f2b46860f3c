// The debug listing of a graph: one block of lines per node, for people.
#pragma once

#include <cstdio>

#include "cdfg/graph.h"

// Writes the listing of all nodes, in creation order, to a text file: 0, or -1 when the graph is
// null or the file cannot be created.
int CdfgDumpText(const CdfgGraph* graph, const char* path);
// The same to an open stream; -1 when the graph is null.
int CdfgDumpStream(const CdfgGraph* graph, std::FILE* stream);
// Writes one node's block; nothing for an unknown id.
void CdfgDumpNode(const CdfgGraph* graph, NodeId id, std::FILE* stream);
