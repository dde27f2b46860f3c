// Where each node of a file stands when the graph is printed as a tree.
//
// Terms:
//   chain      nodes joined by links that agree: a's next is b and b's prev is a. Every node is in
//              exactly one chain; one that closes into a ring is cut in front of its lowest node.
//   reference  a node attribute, or the next link of a chain's last node.
//   home       the one reference under which a chain is printed in place; all others print @id.
//              A chain without a home stands at top level.
//
//   1 CFG_STATE_DATAPATH   OPELIST = 2      chains [1] [2] [3 4]
//   2 DFG_MANAGE_OPERATION prev 1, OPE = 4  home of [2]:   attribute OPELIST of 1
//   3 DFG_OUTPUT_VAR       next 4           home of [3 4]: attribute OPE of 2, which names the 4
//   4 DFG_EDGE_BLOCKING    prev 3           [1] at top level
//
// A reference can be home to a chain when it owns the node it names, as the store has it, or when
// that node's prev points back at the referring node. A next link that leads out of its chain can
// be home to a chain that no attribute can be home to: the inner assignment of a = b = c hangs on
// the outer one like that. Of several, the first in text order is the home.
//
// Needs ascending ids, so that an id names one node.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

#include "tools/raw_file.h"

// A node's place in RawFile::nodes.
using Place = std::uint32_t;
inline constexpr Place kNowhere = std::numeric_limits<Place>::max();

// A reference: a place in RawFile::attributes, or kNextLink plus a node's place.
using Reference = std::uint64_t;
inline constexpr Reference kNextLink = Reference{1} << 63;
inline constexpr Reference kTopLevel = std::numeric_limits<Reference>::max();
inline constexpr Reference kUndecided = kTopLevel - 1;

struct Nesting {
  const RawFile& file;
  std::vector<Place> after;     // by node: the next node of its chain, or kNowhere
  std::vector<Place> head;      // by node: the first node of its chain
  std::vector<bool> has_owner;  // by head: some attribute may be home to the chain
  std::vector<bool> is_linked;  // by head: some next link may be
  std::vector<Reference> home;  // by head
  std::vector<Place> tops;      // the heads at top level, in text order
  std::deque<Place> deferred;   // heads of chains that are too deep for where they belong
  Place last_placed = 0;
  bool in_file_order = true;  // whether text order is the order of the file
};

// Whether ids ascend strictly, which nesting needs.
bool IdsAscend(const RawFile& file);
// The place of an id in a file whose ids ascend; kNowhere for 0 and ids that are not there.
Place FindPlace(const RawFile& file, std::uint32_t id);
// Decides for every chain where it stands, in time and memory that follow the file. No chain stands
// deeper than 32 in another; those that would continue at top level, behind the tree they are from,
// so that a text stays in proportion to its file and nothing recurses along deep expressions.
Nesting FindNesting(const RawFile& file);
