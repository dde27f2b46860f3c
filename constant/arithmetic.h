// Folds one operation on constants into a new constant, with the target's C arithmetic.
//
// The design is full of expressions that have a value already: array sizes, masks, bit positions.
// Computed here they cost no hardware later. The types of the operands decide how to compute, and
// they are known from the texts alone (constant/literal.h), so the result is a text again:
//
//   DFG_OPERATION CALC_Add
//     DfgOpe_LEFT  -> DFG_EDGE_PRESEDE -> "0x10"      =>    DFG_EDGE_PRESEDE -> "0x11"
//     DfgOpe_RIGHT -> DFG_EDGE_PRESEDE -> "1"
//
// One operation at a time: nested ones are folded by the caller from the inside out, and it is the
// caller who stores the result in place of the operation.
#pragma once

#include "cdfg/graph.h"

// The id of the DFG_EDGE_PRESEDE in front of the result of `operation`, a DFG_OPERATION; 0 when it
// is not folded: an operand is no constant, the operator has no fold (for these types), or
// `operation` is no operation at all. Adds a constant and an edge with the operation's source
// position and changes no other node; CALC_Plus adds nothing and answers the edge that stands in
// front of its operand.
NodeId ConstFoldOperation(CdfgGraph* graph, NodeId operation);
