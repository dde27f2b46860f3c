// Guards against walks that cannot end.
//
// A graph may be damaged or hostile: a next chain that leads back to itself, a node that owns
// itself through its references. Such a graph is only a fault when a walk runs into the circle;
// then the run is stopped with one line and nothing is written. The walkers of cdfg/chain.h and
// cdfg/walk.h and the coroutines of cdfg/deep.h carry these guards, so a pass needs no check.
//
// Circles are found with a mark that is moved on after 1, 2, 4, 8, ... steps (Brent): constant
// memory, one comparison per step, found within a few rounds.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "cdfg/graph.h"
#include "cdfg/stack.h"

// Prints "kelvo : Error : Endless graph : node <id>" and ends the run with status 255.
[[noreturn]] void CdfgStopEndless(NodeId node);

// Bounds the work of one pass. Besides circles there are graphs whose walk would end, but not in
// anybody's lifetime: nodes shared so often that the paths to them double with every level. The
// driver grants each pass many times the work that a graph of this size can need.
void CdfgGrantSteps(const CdfgGraph* graph);

namespace runaway {
inline std::uint64_t steps_left = UINT64_MAX;
}

// Counts one step of a walk that has arrived at `node`.
inline void CdfgCountStep(NodeId node) {
  if (runaway::steps_left-- == 0) CdfgStopEndless(node);
}

// Watches one walk along a chain.
class ChainGuard {
 public:
  // To be told every node in turn; stops the run when the chain has come back to one.
  void Visit(NodeId node) {
    CdfgCountStep(node);
    if (node == mark_) CdfgStopEndless(node);
    if (--steps_to_mark_ != 0) return;
    mark_ = node;
    interval_ *= 2;
    steps_to_mark_ = interval_;
  }

 private:
  NodeId mark_ = 0;
  std::uint32_t interval_ = 1;
  std::uint32_t steps_to_mark_ = 1;
};

// Watches one walk into the depth: the path of nodes whose insides are being walked.
class DepthGuard {
 public:
  std::size_t Depth() const { return path_.Size(); }

  // The walk enters the inside of `node`, or of another node at the same depth as before.
  void EnterAt(std::size_t depth, NodeId node) {
    path_.ShrinkTo(depth);
    Enter(node);
  }
  void Enter(NodeId node) {
    CdfgCountStep(node);
    path_.Push(node);
    const std::size_t mark = std::bit_floor(path_.Size());
    if (mark != path_.Size() && path_[mark - 1] == node) CdfgStopEndless(node);
  }
  void Leave() { path_.Pop(); }

 private:
  Stack<NodeId, 16> path_;
};

// Enters a node for the length of a scope.
class DepthScope {
 public:
  DepthScope(DepthGuard& guard, NodeId node) : guard_(guard) { guard_.Enter(node); }
  ~DepthScope() { guard_.Leave(); }
  DepthScope(const DepthScope&) = delete;
  DepthScope& operator=(const DepthScope&) = delete;

 private:
  DepthGuard& guard_;
};
