// Small graphs for tests: building them, and reading them back as text.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>

#include "cdfg/graph.h"

namespace support {

struct GraphFreer {
  void operator()(CdfgGraph* graph) const { CdfgFreeGraph(graph); }
};
using OwnedGraph = std::unique_ptr<CdfgGraph, GraphFreer>;

// A test with a graph of its own.
class GraphTest : public testing::Test {
 protected:
  NodeId Add(std::uint32_t kind) { return CdfgAddNode(graph, kind); }
  // Links the nodes by next and prev, in this order; the first one's prev is left alone.
  void Chain(std::initializer_list<NodeId> nodes);
  // Makes `child` what an attribute of `parent` names, and `parent` the prev of `child`.
  void Own(NodeId parent, std::uint32_t attribute, NodeId child);
  // Gives a node a source position.
  void Place(NodeId node, const char* file, std::int32_t line, std::int32_t column);

  OwnedGraph owned_graph{CdfgNewGraph()};
  CdfgGraph* const graph = owned_graph.get();
};

// The attributes of a node in list order, one word each:
//
//   1=65c 2=-7 3=12L 4=1.5d 5="text" 6=null 7->19
//
// for a char, an int, a long integer, a double, a string, a null string and a node reference.
std::string Attributes(const CdfgGraph* graph, NodeId id);

// The ids met along next from `first`: "3 4 5". Ends after 1000 nodes.
std::string NextIds(const CdfgGraph* graph, NodeId first);

// The kinds of the nodes from id `first` on, in the order of ids: "304 320 357".
std::string KindsFrom(const CdfgGraph* graph, NodeId first);

// "file:line:column" of a node; "-" stands for no file name.
std::string Position(const CdfgGraph* graph, NodeId id);

}  // namespace support
