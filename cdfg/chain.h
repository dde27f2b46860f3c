// Walks along the chains of a graph, as ranges:
//
//   for (NodeId statement : NextChain(graph, first)) ...
//
// Each range reads a node's successor when the loop body is done with the node, so the body may
// insert behind the node (what it inserts is visited), in front of it, and replace or cut the link
// to its successor. It must not move nodes already visited to places still ahead. A chain that
// leads back to itself stops the run (cdfg/runaway.h).
#pragma once

#include "cdfg/graph.h"
#include "cdfg/runaway.h"

// The nodes met from `first` by following one link of each.
template <NodeId (*Follow)(const CdfgGraph*, NodeId)>
class LinkChain {
 public:
  LinkChain(const CdfgGraph* graph, NodeId first) : graph_(graph), first_(first) {}

  struct End {};
  class Iterator {
   public:
    Iterator(const CdfgGraph* graph, NodeId node) : graph_(graph), node_(node) { Guard(); }
    NodeId operator*() const { return node_; }
    Iterator& operator++() {
      node_ = Follow(graph_, node_);
      Guard();
      return *this;
    }
    bool operator!=(End) const { return node_ != 0; }

   private:
    void Guard() {
      if (node_ != 0) guard_.Visit(node_);
    }
    const CdfgGraph* graph_;
    NodeId node_;
    ChainGuard guard_;
  };

  Iterator begin() const { return Iterator(graph_, first_); }
  End end() const { return {}; }

 private:
  const CdfgGraph* graph_;
  NodeId first_;
};

// The member reference behind a port: the s.a.b of a structure access is s, then a, then b.
inline NodeId CdfgGetMemberSon(const CdfgGraph* graph, NodeId port) {
  return CdfgGetAttr(graph, port, DfgPort_STRSON);
}

using NextChain = LinkChain<CdfgGetNext>;
using PrevChain = LinkChain<CdfgGetPrev>;
using MemberChain = LinkChain<CdfgGetMemberSon>;

// The first node from `id` along next that is no DFG_EDGE_PRESEDE, 0 if there is none: an operand
// stands behind one such edge or a run of them.
inline NodeId CdfgSkipReferences(const CdfgGraph* graph, NodeId id) {
  for (const NodeId node : NextChain(graph, id)) {
    if (CdfgGetKind(graph, node) != DFG_EDGE_PRESEDE) return node;
  }
  return 0;
}
