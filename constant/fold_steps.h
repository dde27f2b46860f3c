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
#include "cdfg/runaway.h"
#include "cdfg/stack.h"

// --- Expressions ---------------------------------------------------------------------------------

// Makes `folded`, the answer of a fold, what `attribute` of `holder` names, and `holder` its prev
// unless it is a DFG_EDGE_BLOCKING. Nothing happens when it is 0: the expression did not fold.
void ConstStoreFold(CdfgGraph* graph, NodeId holder, std::uint32_t attribute, NodeId folded);
// The same for an expression that stands behind an assignment edge or a cast.
void ConstStoreFoldBehind(CdfgGraph* graph, NodeId edge, NodeId folded);

// The tree fold. `expression` folds only when it is a DFG_OPERATION itself; answers the
// DFG_EDGE_PRESEDE in front of the constant, or 0.
NodeId ConstFoldTree(CdfgGraph* graph, NodeId expression);

// The chain fold, with a stack of its own instead of recursion; one serves many folds, one after
// the other.
class ChainFold {
 public:
  explicit ChainFold(CdfgGraph* graph) : graph_(graph) {}

  // Folds the chain that begins at `first`. Answers the edge in front of the constant that the last
  // operation to fold has become, or 0. What follows an assignment edge or a cast is folded and
  // stored there, and is no part of the answer.
  NodeId Fold(NodeId first);
  // Folds the indexes and the members of a port and stores them.
  void FoldPort(NodeId port);

 private:
  struct Chain {
    NodeId node = 0;           // the one to be visited; 0: the chain has come to its end
    NodeId folded = 0;         // what its last operation to fold has become
    bool has_value = false;    // something other than a reference has been visited,
    bool is_constant = false;  // and the first such node is a constant
    bool goes_on = true;       // whether what follows a node belongs to it: not behind a port that
                               // is folded alone, an edge or a cast
    ChainGuard guard = {};
  };
  // Which chain inside a node is being folded.
  enum class Inside : std::uint8_t { Left, Right, Condition, Indexes, Members, Arguments, Behind };
  // A node that the fold is inside of.
  struct Level {
    Chain around;  // how the chain that the node stands in goes on
    NodeId node;
    Inside inside;
    bool left_is_constant;
    // For operations: what they were while `folds_` was this number.
    NodeId right;
    NodeId condition;
    std::uint32_t folds;
  };
  // A list whose items' expressions are folded.
  struct List {
    NodeId item;
    ChainGuard guard = {};
  };

  NodeId Run();
  void Visit();
  void Enter(NodeId node, Inside inside, NodeId first);
  void EnterOperation(NodeId operation);
  void EnterPort(NodeId port);
  void EnterList(NodeId node, Inside inside, NodeId list);
  void GoToItem(NodeId item);
  void EndOfChain();
  void EndOfOperand();
  void EndOfOperation();
  void EndOfItem();
  void Leave();
  std::uint32_t ItemAttribute() const;
  bool IsAsItWas(const Level& level) const { return level.folds == folds_; }

  CdfgGraph* graph_;
  Chain chain_;  // the innermost one
  Stack<Level> levels_;
  Stack<List> lists_;
  std::uint32_t folds_ = 0;  // how many operations have folded; nothing else changes the graph
  DepthGuard depth_;
};

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
