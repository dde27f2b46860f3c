// The steps that the folding passes are made of.
//
// There are two folds of an expression. The tree fold is for sizes and initialisers: it goes from
// operation to operation and stops at every reference, cast and call. The chain fold is for
// executed code: it goes wherever a value comes from. Both fold from the inside out, and whatever
// folds below an operation is stored there; what the expression itself folds to is answered, for
// the caller to store.
#pragma once

#include <cstdint>

#include "cdfg/graph.h"

// --- Expressions ---------------------------------------------------------------------------------

// Makes `folded`, the answer of a fold, what `attribute` of `holder` names, and `holder` its prev
// unless it is a DFG_EDGE_BLOCKING. Nothing happens when it is 0: the expression did not fold.
void ConstStoreFold(CdfgGraph* graph, NodeId holder, std::uint32_t attribute, NodeId folded);
// The same for an expression that stands behind an assignment edge or a cast.
void ConstStoreFoldBehind(CdfgGraph* graph, NodeId edge, NodeId folded);

// The tree fold. `expression` folds only when it is a DFG_OPERATION itself; answers the
// DFG_EDGE_PRESEDE in front of the constant, or 0.
NodeId ConstFoldTree(CdfgGraph* graph, NodeId expression);

// The chain fold of the chain that begins at `first`. Answers the edge in front of the constant
// that the last operation to fold has become, or 0. What follows an assignment edge or a cast is
// folded and stored there, and is no part of the answer.
NodeId ConstFoldChain(CdfgGraph* graph, NodeId first);
// The chain fold of the indexes and the members of a port, stored.
void ConstFoldPort(CdfgGraph* graph, NodeId port);

// --- Declarations --------------------------------------------------------------------------------

enum class Initialisers : std::uint8_t { Leave, Fold };

// Folds the sizes of an array declaration by the tree fold. A size that folds here gets the
// constant's value as its DfgDim_CNT too.
void ConstFoldDimensions(CdfgGraph* graph, NodeId declaration);

// Folds the sizes of a declaration, then the sizes and initialisers of the structure members below
// it, then, if asked to, its own initialiser, all by the tree fold.
void ConstFoldDeclaration(CdfgGraph* graph, NodeId declaration, Initialisers initialisers);
// The same for every CFG_DECLARE of a chain; nodes of other kinds are stepped over.
void ConstFoldDeclared(CdfgGraph* graph, NodeId list, Initialisers initialisers);
