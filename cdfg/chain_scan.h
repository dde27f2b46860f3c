// A walk over a chain and the chains below it, in the order of ChainWalk (cdfg/walk.h), for those
// who only look.
//
// The graph must not change while the walk is under way. So the successor of a node is known when
// the node is visited, and the last node of a chain leaves nothing behind on the stack: an
// expression a million levels deep costs the operands that are still to come, and no frame for each
// operation that contains the walk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "cdfg/graph.h"
#include "cdfg/read_ahead.h"
#include "cdfg/runaway.h"
#include "cdfg/stack.h"
#include "cdfg/walk.h"

class ChainScan {
 public:
  explicit ChainScan(const CdfgGraph* graph) : graph_(graph) {}

  // Begins a walk at `first`, ending one that is under way.
  void Start(NodeId first) {
    ahead_.ShrinkTo(0);
    asked_ = 0;
    if (first != 0) ahead_.Push({first});
  }

  // The next node; 0 at the end.
  NodeId Next() {
    if (asked_ > 1) PutFirstOnTop();
    asked_ = 0;
    if (ahead_.IsEmpty()) return 0;
    Frame& frame = ahead_.Back();
    node_ = frame.node;
    depth_ = frame.depth;
    if (frame.owner != 0) guard_.EnterAt(depth_ - 1, std::exchange(frame.owner, 0));
    frame.guard.Visit(node_);
    CdfgReadAhead(graph_, node_);
    frame.node = CdfgGetNext(graph_, node_);
    if (frame.node == 0) ahead_.Pop();
    return node_;
  }

  // Asks for the chain at `first` to be visited before the successor of the current node; chains
  // asked for at one visit come in the order asked. 0 is allowed: an empty chain.
  void Enter(NodeId first) {
    if (first == 0) return;
    ahead_.Push({first, node_, depth_ + 1});
    ++asked_;
  }
  // The same for the operands of an operation: left, right, condition.
  void EnterOperands(NodeId operation) {
    const CdfgOperands operands = CdfgGetOperands(graph_, operation);
    Enter(operands.left);
    Enter(operands.right);
    Enter(operands.condition);
  }

  // How many nodes contain the current one; 0 on the chain that the walk began with.
  std::size_t Depth() const { return depth_; }

 private:
  // What is ahead on one chain.
  struct Frame {
    NodeId node;
    NodeId owner = 0;  // of a chain that was asked for and is not begun yet
    std::uint32_t depth = 0;
    ChainGuard guard = {};
  };

  // The chain asked for first must lie on top.
  void PutFirstOnTop() {
    std::size_t low = ahead_.Size() - asked_;
    std::size_t high = ahead_.Size() - 1;
    while (low < high) std::swap(ahead_[low++], ahead_[high--]);
  }

  const CdfgGraph* graph_;
  Stack<Frame> ahead_;
  std::size_t asked_ = 0;
  NodeId node_ = 0;
  std::uint32_t depth_ = 0;
  DepthGuard guard_;
};
