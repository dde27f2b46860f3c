// The graphs of a case: text to bytes and back, with the names that the case gives its nodes.
//
// What the graph before calls `f` is `f` in the graph after too, whatever stands in front of it
// there. The nodes that the steps make are called new1, new2, ... in the order in which they are
// made, so that a case does not have to know how many nodes it began with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "tools/text_form.h"

struct CaseNames {
  TextLabels labels;
  std::unordered_map<std::uint32_t, std::string> by_id;
  std::unordered_set<std::uint32_t> ids;  // of all nodes before
  std::uint32_t last_id = 0;              // new nodes are counted on from it
  bool is_sorted = false;                 // the nodes stand in the order of their ids
};

// Both answer whether the text could be read; the error stands in `error` then.
bool ReadBefore(std::string_view text, std::string* bytes, CaseNames* names, TextError* error);
// The nodes are put in the order of their ids if those of the graph before are.
bool ReadAfter(std::string_view text, const CaseNames& names, std::string* bytes, TextError* error);

// The graph as it would be written under "-- after --". A node is labelled where its id does not
// follow from the node before it, where something refers to it, and where it has a name.
std::string PrintAfter(std::string_view bytes, const CaseNames& names);

// What the case calls a node: its name, or its number.
std::string NameOfNode(std::uint32_t id, const CaseNames& names);
