// Deep copies: of a statement chain with all that hangs below it, and of a single operand.
#pragma once

#include "cdfg/graph.h"

// The record of one copied declaration or structure. While a remapping copy's table stands, the
// user data of the source node points at its record.
struct DeclarationCopy {
  NodeId source = 0;
  NodeId copy = 0;
};

// What the two program-wide switches of the copier change; both 0 at start. Whoever sets one sets
// it back after the copy.
//
// Remap: every copied CFG_STRUCT and CFG_DECLARE gets a DeclarationCopy record, and a copied
// declaration of a structure that was copied itself names the structure's copy as its origin.
extern int CdfgRemapSwitch;
// Member share: initialiser expressions below CFG_MEMBER are copied and no longer shared.
extern int CdfgMemberShareSwitch;

// Copies the chain that begins at `id`, with everything that its nodes own; references that only
// point somewhere are shared. Nodes are made in the order of the walk: a node, then what its
// attributes own in their order, then its successor. The target in front of an assignment edge
// is copied with it. Jumps within the copied region are re-pointed, others are left out, except
// that a call keeps the function that it calls. Answers the copy of `id`; 0 for 0 or an unknown id.
NodeId CdfgCopyTree(CdfgGraph* graph, NodeId id);

// The same for one node and all below it, without what follows it in its chain.
NodeId CdfgCopyAlone(CdfgGraph* graph, NodeId id);

// The record of a node copied with remap on, null if it was not.
const DeclarationCopy* CdfgGetDeclarationCopy(const CdfgGraph* graph, NodeId source);

// Forgets the declarations copied with remap on and clears the user data of their sources.
void CdfgClearUserTable(CdfgGraph* graph);

// Copies one operand: a constant, a string, or a port with its indexes and its member chain. The
// links to other nodes stay empty. Answers the copy; 0 for 0 or an unknown id.
NodeId CdfgCopyInput(CdfgGraph* graph, NodeId operand);
