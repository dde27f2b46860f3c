// The walks that every pass makes, with a stack of their own instead of recursion.
//
// ChainWalk visits the nodes of a chain and, between a node and its successor, the chains that the
// caller asks to be entered. StatementWalk is the walk over the statements of a body: it knows
// where the branches of an if, the items of a case and the parts of a loop stand, so a pass only
// says what it does at each kind.
//
//   StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
//   while (const NodeId statement = walk.Next()) {
//     switch (CdfgGetKind(graph, statement)) { ... }
//   }
//
// Both read on only when the caller is done with a node: its links, its attributes and everything
// behind it may be changed at the visit, and the walk follows what stands there afterwards. What
// is inserted behind the node is visited, what is inserted in front of it is not. The order of
// visits decides node ids and the numbers of temporaries; it is part of the interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/graph.h"
#include "cdfg/runaway.h"
#include "cdfg/stack.h"

// The operands of an operation: what CdfgGetAttr answers for each of them, found with one look at
// its attributes.
struct CdfgOperands {
  NodeId left = 0;
  NodeId right = 0;
  NodeId condition = 0;
};
CdfgOperands CdfgGetOperands(const CdfgGraph* graph, NodeId operation);

// A walk over a chain and the chains below it, in depth-first order.
class ChainWalk {
 public:
  explicit ChainWalk(const CdfgGraph* graph) : graph_(graph) {}
  ChainWalk(const CdfgGraph* graph, NodeId first) : graph_(graph) { Start(first); }

  // Begins a walk at `first`, ending one that is under way. `tag` is handed back by Tag().
  void Start(NodeId first, int tag = 0);
  // The next node; 0 at the end.
  NodeId Next();
  // Asks for the chain at `first` to be visited before the successor of the current node; chains
  // asked for at one visit come in the order asked. 0 is allowed: an empty chain.
  void Enter(NodeId first, int tag = 0);
  // The same for the operands of an operation: left, right, condition.
  void EnterOperands(NodeId operation, int tag = 0);

  // The tag of the chain that the current node stands in.
  int Tag() const { return frames_.IsEmpty() ? 0 : Current().tag; }
  // How many nodes contain the current one; 0 on the chain that the walk began with.
  std::size_t Depth() const { return frames_.IsEmpty() ? 0 : Current().depth; }
  // With leaves on, Next() answers a node whose chains were entered (empty ones too) once more
  // after them, with Leaving() true. Nothing can be entered at that second visit.
  void WithLeaves() { leaves_ = true; }
  bool Leaving() const { return !frames_.IsEmpty() && Current().state == State::Left; }

 private:
  enum class State : std::uint8_t { Ahead, Visited, Left };
  struct Frame {
    NodeId node = 0;  // Ahead: to be visited; else: visited, its successor is to be read
    std::uint32_t depth = 0;
    int tag = 0;
    State state = State::Ahead;
    bool entered = false;
    ChainGuard guard;
  };
  const Frame& Current() const { return frames_.Below(asked_); }
  void PushChain(NodeId first, std::uint32_t depth, int tag);
  // The chain asked for first must lie on top.
  void PutInOrder();
  NodeId Visit(Frame& frame);

  const CdfgGraph* graph_;
  bool leaves_ = false;
  // The chain of the current node, on top of those around it; above it those asked for at the
  // current visit, in that order or, when they are in order already, the other way round.
  Stack<Frame, 8> frames_;
  std::size_t asked_ = 0;
  bool in_order_ = false;
  DepthGuard guard_;
};

// Which nodes a StatementWalk enters beside the usual ones.
enum class StatementScope : std::uint8_t {
  // The body of one function: branches of CFG_STATE_IF, items of the case kinds, parts of
  // CFG_LOOP_BEGIN and the body of CFG_LOOP_STAT.
  Body,
  // The same, and functions are entered through CfgFunc_STARTCFG: for the elements of a file.
  Elements,
  // Every kind that holds statements or elements, wherever it stands: files, modules, functions,
  // and a branch, item or loop body even outside its owner's list.
  Anywhere,
};

// Enters what `attribute` names in each item of a list: the indexes of a variable, the arguments of
// a call. `walk` is a ChainWalk, with the tag that its chains get or none, or a ChainScan.
template <class Walk, class... Tag>
void CdfgEnterListed(const CdfgGraph* graph, Walk& walk, NodeId list, std::uint32_t attribute,
                     Tag... tag) {
  for (const NodeId item : NextChain(graph, list)) {
    walk.Enter(CdfgGetAttr(graph, item, attribute), tag...);
  }
}

// A walk over statements. Visited are the statements themselves and, inside their owners,
// CFG_IF_THEN and CFG_IF_ELSE, CFG_CASE_ITEM, CFG_LOOP_INIT, CFG_LOOP_COND, CFG_LOOP_STAT and
// CFG_LOOP_STEP, each in chain order. Other kinds in those lists are stepped over, and so are these
// where they stand outside their owners. A node's inside is looked up after its visit, so a pass
// may still give it a new body.
class StatementWalk {
 public:
  StatementWalk(const CdfgGraph* graph, NodeId first, StatementScope scope = StatementScope::Body);

  // The next node; 0 at the end.
  NodeId Next();
  // Keeps the walk out of the current node's inside.
  void Skip() { last_ = 0; }
  // How many nodes contain the current one: 0 for the statements of the body itself, above 0
  // inside branches, items and loops.
  std::size_t Depth() const { return walk_.Depth(); }
  // Whether the current node is a part of the statement around it (a branch, an item, a loop part)
  // and not a statement itself.
  bool AtPart() const;
  // As in ChainWalk: nodes that were entered are answered a second time after their inside.
  void WithLeaves() { walk_.WithLeaves(); }
  bool Leaving() const { return walk_.Leaving(); }

 private:
  void EnterInside(NodeId node);
  bool IsVisited(NodeId node) const;

  const CdfgGraph* graph_;
  StatementScope scope_;
  ChainWalk walk_;
  NodeId last_ = 0;
};

// The operation list of a statement or a part of one, 0 for kinds without: what a datapath
// executes, what a return answers, the condition of an if, a case or a loop, the init and step
// lists of a loop.
NodeId CdfgGetOperationList(const CdfgGraph* graph, NodeId statement);

// The files of a design: the CFG_FILEINFO nodes among the elements of its root, in order.
std::vector<NodeId> CdfgGetFiles(const CdfgGraph* graph);

// The functions of a design that stand directly among the elements of a file and that `is_wanted`
// answers 1 for, asked with the function's name and the name of the file that holds it (either may
// be null). In file order; the body of the loop may insert elements in front of the function.
//
//   FunctionCursor functions(graph, IsModuleFunction);
//   while (const NodeId function = functions.Next()) ...
class FunctionCursor {
 public:
  using Test = int (*)(const char* name, const char* file);

  FunctionCursor(const CdfgGraph* graph, Test is_wanted);

  // The next function; 0 at the end.
  NodeId Next();

 private:
  const CdfgGraph* graph_;
  Test is_wanted_;
  ChainWalk walk_;
  const char* file_name_ = nullptr;
};
